#pragma once

#include <filesystem>

namespace velk {

/** Moves a file out of the way and, when destroyed, back to its place, unless it is no longer needed. */
class SetAside {
public:
    /** A file that does not exist, or cannot be moved, is left alone. */
    explicit SetAside(std::filesystem::path file);
    ~SetAside();
    SetAside(SetAside const&) = delete;
    SetAside& operator=(SetAside const&) = delete;

    /** A better file has taken its place. */
    void drop();

private:
    std::filesystem::path file_;
    std::filesystem::path place_; ///< where it is meanwhile; empty when it was not moved
};

} // namespace velk
