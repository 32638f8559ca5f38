#pragma once

#include "tools/common/UploadProgress.h"

#include <string>

namespace demo {

/** What the demonstration prints. Colours and the moving line of progress only on a terminal. */
class Screen {
public:
    Screen();

    void title(std::string const& text);
    void step(std::string const& text); ///< the start of a numbered step
    void say(std::string const& text);  ///< one line within a step
    void print(std::string const& lines);
    void good(std::string const& text);
    void bad(std::string const& text);

    /** The line of progress of an upload; ends it when the upload is done. */
    void progress(tools::Upload const& upload);

private:
    std::string coloured(char const* colour, std::string const& text) const;

    bool terminal_;
    int steps_ = 0;
};

} // namespace demo
