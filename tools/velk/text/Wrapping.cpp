#include "tools/velk/text/Wrapping.h"

#include <sstream>

namespace velk {

std::string wrapped(std::string const& text, std::size_t indent, std::size_t width) {
    std::string lines;
    std::size_t used = indent;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        bool const first = lines.empty();
        if (!first && used + 1 + word.size() > width) {
            lines += "\n" + std::string(indent, ' ');
            used = indent;
        } else if (!first) {
            lines += ' ';
            ++used;
        }
        lines += word;
        used += word.size();
    }
    return lines;
}

} // namespace velk
