#include "driver/Protocol_VELK.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/tag/Tag_VELK.h"
#include "interfaces/HostServices.h"
#include "protlib/BitPacking.h"
#include "protlib/DataTypes.h"
#include "protlib/ScratchBuffer.h"

#include <algorithm>

namespace {

using Image = ProtUtilsN::ScratchBuffer<128>;

constexpr int kMaxPurges = 1'000;
constexpr std::size_t kIdentifierLength = 4;
constexpr std::int64_t kReplyOverhead = 7; // status word, four bytes without meaning, one quality byte
constexpr int kWriteMargin = 8;            // room around a value for the element that it lies in

constexpr char const* kNoBuffer = "Can't allocate buffer";
constexpr char const* kItemConversion = "datagramItem conversion error";

std::int64_t imageLength(ITag const* const* tags, int count) {
    std::int64_t length = 0;
    for (int i = 0; i < count; ++i) {
        length += tags[i]->PackedLen();
    }
    return length;
}

/** The value of a "PROJ_ID" tag as its node would send it, so that a conversion gives the identifier on every node. */
void putIdentifier(Tag_VELK const& tag, std::span<unsigned char> image) {
    if (image.size() >= kIdentifierLength) {
        _VELK::put32(image, static_cast<std::uint32_t>(tag.index()), _VELK::byteOrderOf(tag.swapsBytes()));
    }
}

} // namespace

/** The whole elements of its area that a value of some length lies in. */
struct Protocol_VELK::BlockPlace {
    int skip = 0; ///< bytes before the value
    std::int64_t length = 0;

    BlockPlace(Tag_VELK const& tag, int valueLength) {
        ICU_Type const unit = tag.memoryType()->getNaturalType();
        if (ProtUtilsN::IsBitType(unit)) {
            length = ProtUtilsN::GetLenOfBits(tag.GetBitIndex(), tag.GetVarLength());
            return;
        }
        int const element = std::max(ProtUtilsN::GetDataLength(unit), 1);
        auto const start = static_cast<std::uint32_t>(tag.index()) * static_cast<std::uint32_t>(element);
        skip = static_cast<int>(static_cast<std::uint32_t>(tag.GetByteOffset()) - start);
        std::int64_t const end = std::int64_t{skip} + valueLength;
        length = (end + element - 1) / element * element;
    }
};

bool Protocol_VELK::ReadBlock(ITag const* tag, unsigned char* bytes, int length) {
    return guarded([&] { return readBlockImage(tag, bytes, length); });
}

bool Protocol_VELK::readBlockImage(ITag const* tag, unsigned char* bytes, int length) {
    if (!requireStarted()) {
        return false;
    }
    if (tag == nullptr || bytes == nullptr || length < 0) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    if (length == 0) {
        return true;
    }
    BlockPlace const place(velkTag(*tag), length);
    std::int64_t const needed = std::max(place.length, std::int64_t{place.skip} + length);
    if (refuseImage(&tag, 1, needed + kReplyOverhead, false)) {
        return false;
    }
    Image image(needed);
    if (!image.available()) {
        return fail(kErrorPort, kNoBuffer);
    }
    if (!fillBlock(tag, image.bytes(), static_cast<int>(place.length))) {
        return false;
    }
    std::copy_n(image.bytes().begin() + place.skip, length, bytes);
    return true;
}

/** Reads @p length bytes from the start of the tag's first element on. */
bool Protocol_VELK::fillBlock(ITag const* tag, std::span<unsigned char> image, int length) {
    if (velkTag(*tag).isProjectIdentifier()) {
        putIdentifier(velkTag(*tag), image);
        return true;
    }
    return exchangeAttempts(false, &tag, 1, image.data(), length);
}

bool Protocol_VELK::ReadDatagram(ITag const* const* tags, int count, unsigned char* values) {
    return guarded([&] { return readDatagramImage(tags, count, values, nullptr); });
}

bool Protocol_VELK::ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                           idal_error_t* status) {
    if (status == nullptr) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    std::fill_n(status, std::max(count, 0), kItemNotProcessed);
    return guarded([&] { return readDatagramImage(tags, count, values, status); });
}

/** Reads the tags and converts their values; with @p status also reports on each. */
bool Protocol_VELK::readDatagramImage(ITag const* const* tags, int count, unsigned char* values, idal_error_t* status) {
    if (!areTags(tags, count) || (values == nullptr && count > 0)) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    std::int64_t const length = imageLength(tags, count);
    if (refuseImage(tags, count, length, false)) {
        return false;
    }
    Image image(length);
    if (!image.available()) {
        return fail(kErrorPort, kNoBuffer);
    }
    if (!doReadDatagram(tags, count, image.bytes())) {
        return false;
    }
    unsigned char const* source = image.bytes().data();
    for (int i = 0; i < count; ++i) {
        Tag_VELK const& tag = velkTag(*tags[i]);
        if (status != nullptr) {
            status[i] = reportStatus(tag);
        }
        if (!tag.ConvertVariable(source, values, false)) {
            return fail(kErrorConversion, kItemConversion);
        }
        source += tag.PackedLen();
        values += tag.GetVarLength();
    }
    return true;
}

/** Answers the tag's status, and makes it the last error when the tag was not found. */
idal_error_t Protocol_VELK::reportStatus(Tag_VELK const& tag) {
    if (tag.status() != kItemGood) {
        failNaming("tag ", tag.variableName().c_str(), " not present in symbol file");
    }
    return tag.status();
}

bool Protocol_VELK::doReadDatagram(ITag const* const* tags, int count, std::span<unsigned char> image) {
    if (velkTag(*tags[0]).isProjectIdentifier()) {
        putIdentifier(velkTag(*tags[0]), image);
        return true;
    }
    return exchangeAttempts(false, tags, count, image.data(), 0);
}

bool Protocol_VELK::Write(ITag const* tag, unsigned char const* value) {
    return guarded([&] { return writeValueImage(tag, value); });
}

bool Protocol_VELK::writeValueImage(ITag const* tag, unsigned char const* value) {
    if (!requireStarted()) {
        return false;
    }
    if (tag == nullptr || value == nullptr) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    if (tag->IsReadOnly()) {
        return fail(kErrorRequest, "writing to read_only type");
    }
    int const packedLength = tag->PackedLen();
    if (refuseImage(&tag, 1, packedLength, true)) {
        return false;
    }
    BlockPlace const place(velkTag(*tag), packedLength);
    Image image(std::max(std::int64_t{packedLength} + kWriteMargin, place.length));
    if (!image.available()) {
        return fail(kErrorPort, kNoBuffer);
    }
    bool const isWholeElement = place.skip == 0 && place.length == packedLength;
    if (!isWholeElement && !fillBlock(tag, image.bytes(), static_cast<int>(place.length))) {
        return false;
    }
    if (!tag->ConvertVariable(value, image.bytes().data() + place.skip, true)) {
        return fail(kErrorConversion, "write conversion error");
    }
    if (velkTag(*tag).isProjectIdentifier()) {
        // Reported as written although nothing goes out, deliberately.
        return true;
    }
    // Also of a part of an element the first bytes of the image go out, deliberately.
    return exchangeAttempts(true, &tag, 1, image.bytes().data(), 0);
}

bool Protocol_VELK::WriteDatagram(ITag const* const* tags, int count, unsigned char const* values) {
    return guarded([&] { return writeDatagramImage(tags, count, values); });
}

bool Protocol_VELK::writeDatagramImage(ITag const* const* tags, int count, unsigned char const* values) {
    if (!areTags(tags, count) || (values == nullptr && count > 0)) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    std::int64_t const length = imageLength(tags, count);
    if (refuseImage(tags, count, length, true)) {
        return false;
    }
    Image image(length);
    if (!image.available()) {
        return fail(kErrorPort, kNoBuffer);
    }
    unsigned char* destination = image.bytes().data();
    for (int i = 0; i < count; ++i) {
        if (!tags[i]->ConvertVariable(values, destination, true)) {
            return fail(kErrorConversion, kItemConversion);
        }
        values += tags[i]->GetVarLength();
        destination += tags[i]->PackedLen();
    }
    return exchangeAttempts(true, tags, count, image.bytes().data(), 0);
}

bool Protocol_VELK::WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                            idal_error_t* status) {
    if (status == nullptr) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    if (!WriteDatagram(tags, count, values)) {
        return false;
    }
    std::fill_n(status, count, kItemGood);
    return true;
}

/** Runs the sequencer as often as the node of tags[0] is configured for, until it succeeds. */
bool Protocol_VELK::exchangeAttempts(bool write, ITag const* const* tags, int count, unsigned char* image, int length) {
    if (!requireStarted()) {
        return false;
    }
    for (int left = paramManager_.getNodeParams(GetNodeID(tags[0]))->repeat; left > 0; --left) {
        emptyPort();
        if (doProtocolInner(write, tags, count, image, length)) {
            return true;
        }
    }
    return false;
}

/** Bounded, for a port that never runs empty must not hold up the host for ever. */
void Protocol_VELK::emptyPort() {
    int left = kMaxPurges;
    while (left > 0 && port_->Purge(rxFrame_.data(), 0, 0) != 0) {
        --left;
    }
}

/**
 * Refuses what the link's buffers can never hold before memory is asked for it. A call that would not even have come
 * to the buffers keeps its own reason.
 */
bool Protocol_VELK::refuseImage(ITag const* const* tags, int count, std::int64_t length, bool write) {
    if (length <= static_cast<std::int64_t>(kDataLength)) {
        return false;
    }
    if (requireStarted() && requireItemLimit(tags, count)) {
        fault(kErrorRequest, write ? _VELK::kTxExceeded : _VELK::kRxExceeded);
    }
    return true;
}

bool Protocol_VELK::requireStarted() {
    return portOpen_ || fail(kErrorState, _VELK::kNotStarted);
}

bool Protocol_VELK::requireItemLimit(ITag const* const* tags, int count) {
    return MaxDatagramItems(tags[0]) >= count || fail(kErrorRequest, "Too many items in datagram");
}
