#include "tools/velk/commands/watch/ValueFile.h"

#include "tools/velk/context/CommandError.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace velk {

ValueFile::ValueFile(std::string name) : name_(std::move(name)), file_(std::fopen(name_.c_str(), "abe")) {
    if (!file_) {
        refuse();
    }
    bool const grows = std::fseek(file_.get(), 0, SEEK_END) == 0 && std::ftell(file_.get()) > 0;
    if (!grows) {
        write("time,station,name,value,status,reason\r\n");
    }
}

void ValueFile::append(std::span<Reading const> readings) {
    std::string text;
    for (Reading const& reading : readings) {
        std::string const value = reading.result.good ? reading.tag->plainText(reading.result.value) : std::string();
        text += fmt::format("{},{},{},{},{},{}\r\n", utcText(reading.at), csvField(toUtf8(reading.tag->station)),
                            csvField(toUtf8(reading.tag->name)), csvField(value), statusWord(reading),
                            csvField(toUtf8(reasonText(reading))));
    }
    write(text);
}

void ValueFile::write(std::string const& text) {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size() || std::fflush(file_.get()) != 0) {
        refuse();
    }
}

void ValueFile::refuse() const {
    throw CommandError(ExitCode::Usage, "cannot write " + name_ + ": " + std::generic_category().message(errno));
}

} // namespace velk
