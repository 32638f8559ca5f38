#pragma once

#include <filesystem>

namespace velk {

/** Moves a file out of the way and, at the end of its life, back to its place: unless it is not needed any more. */
class SetAside {
public:
    /** A file that is not there, or cannot be moved, is left alone. */
    explicit SetAside(std::filesystem::path file);
    ~SetAside();
    SetAside(SetAside const&) = delete;
    SetAside& operator=(SetAside const&) = delete;

    /** There is something better in its place. */
    void drop();

private:
    std::filesystem::path file_;
    std::filesystem::path place_; ///< where it is meanwhile; empty when it was not moved
};

} // namespace velk
