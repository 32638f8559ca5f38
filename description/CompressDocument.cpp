// Runs on the build machine: compresses the description document and writes its container as the initialiser of a byte
// array. The container states both sizes, so a document of another size stops the build.

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kDocumentSize = 13'595;
constexpr std::size_t kCompressedSize = 2'055;

constexpr std::string_view kStartMarker = "<<ICOM_XML_START>>";
constexpr std::string_view kIdentity = "Name=VELK?FullName=Velk Serial Link?Version=144?Platform=KQ47_LIN";
constexpr std::string_view kSizeKey = "compressedXML=";
constexpr std::string_view kEndMarker = "<<ICOM_XML_END>>";

bool readFile(char const* path, Bytes& content) {
    std::ifstream file(path, std::ios::binary);
    content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return file.good() || file.eof();
}

bool compressDocument(Bytes const& document, Bytes& stream) {
    uLongf size = compressBound(static_cast<uLong>(document.size()));
    stream.resize(size);
    if (compress(stream.data(), &size, document.data(), static_cast<uLong>(document.size())) != Z_OK) {
        return false;
    }
    stream.resize(size);
    return true;
}

void append(Bytes& container, std::string_view text) {
    container.insert(container.end(), text.begin(), text.end());
}

Bytes makeContainer(Bytes const& stream) {
    Bytes container;
    append(container, kStartMarker);
    append(container, kIdentity);
    container.push_back(0);
    append(container, kSizeKey);
    append(container, std::to_string(stream.size()));
    container.push_back(0);
    container.insert(container.end(), stream.begin(), stream.end());
    append(container, kEndMarker);
    container.push_back(0);
    return container;
}

bool writeInitialiser(char const* path, Bytes const& container) {
    constexpr std::size_t kBytesPerLine = 20;
    std::ofstream file(path, std::ios::binary);
    std::array<char, 8> text{};
    for (std::size_t i = 0; i < container.size(); ++i) {
        std::snprintf(text.data(), text.size(), "0x%02x,", static_cast<unsigned>(container[i]));
        file << text.data() << ((i + 1) % kBytesPerLine == 0 ? "\n" : "");
    }
    file << "\n";
    file.close();
    return file.good();
}

int run(char const* documentPath, char const* initialiserPath) {
    Bytes document;
    if (!readFile(documentPath, document)) {
        std::fprintf(stderr, "%s: cannot be read\n", documentPath);
        return EXIT_FAILURE;
    }
    Bytes stream;
    if (!compressDocument(document, stream)) {
        std::fprintf(stderr, "%s: zlib cannot compress it\n", documentPath);
        return EXIT_FAILURE;
    }
    if (document.size() != kDocumentSize || stream.size() != kCompressedSize) {
        std::fprintf(stderr, "%s: %zu bytes, %zu compressed by zlib %s; it has to have %zu bytes, %zu compressed\n",
                     documentPath, document.size(), stream.size(), zlibVersion(), kDocumentSize, kCompressedSize);
        return EXIT_FAILURE;
    }
    if (!writeInitialiser(initialiserPath, makeContainer(stream))) {
        std::fprintf(stderr, "%s: cannot be written\n", initialiserPath);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: compress-document DOCUMENT INITIALISER\n");
        return EXIT_FAILURE;
    }
    return run(arguments[1], arguments[2]);
}
