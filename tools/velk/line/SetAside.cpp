#include "tools/velk/line/SetAside.h"

#include <system_error>
#include <utility>

namespace velk {

SetAside::SetAside(std::filesystem::path file) : file_(std::move(file)) {
    std::filesystem::path place = file_;
    place += ".before";
    std::error_code error;
    std::filesystem::rename(file_, place, error);
    if (!error) {
        place_ = std::move(place);
    }
}

SetAside::~SetAside() {
    if (!place_.empty()) {
        std::error_code ignored;
        std::filesystem::rename(place_, file_, ignored);
    }
}

void SetAside::drop() {
    std::error_code ignored;
    if (!place_.empty()) {
        std::filesystem::remove(place_, ignored);
        place_.clear();
    }
}

} // namespace velk
