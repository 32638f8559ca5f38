#include "driver/EntryPoints.h"

#include "driver/ListAccess.h"
#include "driver/config/ByteOrder.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/session/Session.h"
#include "driver/tag/TagList.h"
#include "interfaces/ErrorCodes.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/safety/ScratchBuffer.h"
#include "protlib/types/BitPacking.h"
#include "protlib/types/DataTypes.h"
#include "protlib/types/MemoryType.h"

#include <algorithm>

namespace _VELK {

namespace {

using Image = ProtUtilsN::ScratchBuffer<128>;

constexpr std::size_t kIdentifierLength = 4;
constexpr std::int64_t kReplyOverhead = 7; // status word, four bytes without meaning, one quality byte
constexpr int kWriteMargin = 8;            // room around a value for the element that contains it

constexpr char const* kItemConversion = "datagramItem conversion error";

std::int64_t imageLength(ITag const* const* tags, int count) {
    std::int64_t length = 0;
    for (int i = 0; i < count; ++i) {
        length += tags[i]->PackedLen();
    }
    return length;
}

/** The value of a "PROJ_ID" tag in its node's byte order, so that the conversion gives the identifier on every node. */
void putIdentifier(Tag_VELK const& tag, std::span<unsigned char> image) {
    if (image.size() >= kIdentifierLength) {
        put32(image, static_cast<std::uint32_t>(tag.index()), byteOrderOf(tag.swapsBytes()));
    }
}

/** The whole elements of its area that a value of some length touches. */
struct BlockPlace {
    int skip = 0; ///< bytes before the value
    std::int64_t length = 0;

    BlockPlace(Tag_VELK const& tag, int valueLength) {
        ICU_Type const unit = tag.memoryType()->getNaturalType();
        if (ProtUtilsN::IsBitType(unit)) {
            length = ProtUtilsN::GetLenOfBits(tag.GetBitIndex(), tag.GetVarLength());
            return;
        }
        auto const element = static_cast<std::uint32_t>(std::max(ProtUtilsN::GetDataLength(unit), 1));
        std::uint32_t const start = static_cast<std::uint32_t>(tag.index()) * element;
        skip = static_cast<int>(static_cast<std::uint32_t>(tag.GetByteOffset()) - start);
        std::uint32_t const end = static_cast<std::uint32_t>(skip) + static_cast<std::uint32_t>(valueLength);
        std::uint32_t const beyond = end % element; // bytes of the value in a last element that it does not fill
        length = std::int64_t{end} + (beyond != 0 ? element - beyond : 0);
    }
};

} // namespace

bool EntryPoints::canCarry(ITag const* tag) {
    return !refuseImage(&tag, 1, tag->PackedLen(), false);
}

bool EntryPoints::readElements(ITag const* tag, unsigned char* bytes, int length) {
    if (!session_.link.requireOpen()) {
        return false;
    }
    if (tag == nullptr || bytes == nullptr || length < 0) {
        return session_.errors.fail(kErrorRequest, kInvalidArgument);
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
        return session_.errors.fail(kErrorPort, ProtUtilsN::kOutOfMemoryText);
    }
    if (!fillBlock(tag, image.bytes(), static_cast<int>(place.length))) {
        return false;
    }
    std::copy_n(image.bytes().begin() + place.skip, length, bytes);
    return true;
}

/** Reads @p length bytes from the start of the tag's first element on. */
bool EntryPoints::fillBlock(ITag const* tag, std::span<unsigned char> image, int length) {
    if (velkTag(*tag).isProjectIdentifier()) {
        putIdentifier(velkTag(*tag), image);
        return true;
    }
    return attempt(false, &tag, 1, image.data(), length);
}

bool EntryPoints::readList(ITag const* const* tags, int count, unsigned char* values, idal_error_t* status) {
    if (!areTags(tags, count) || (values == nullptr && count > 0)) {
        return session_.errors.fail(kErrorRequest, kInvalidArgument);
    }
    std::int64_t const length = imageLength(tags, count);
    if (refuseImage(tags, count, length, false)) {
        return false;
    }
    Image image(length);
    if (!image.available()) {
        return session_.errors.fail(kErrorPort, ProtUtilsN::kOutOfMemoryText);
    }
    if (!readImage(tags, count, image.bytes())) {
        return false;
    }
    unsigned char const* source = image.bytes().data();
    for (int i = 0; i < count; ++i) {
        Tag_VELK const& tag = velkTag(*tags[i]);
        if (status != nullptr) {
            status[i] = reportStatus(tag);
        }
        if (!tag.ConvertVariable(source, values, false)) {
            return session_.errors.fail(kErrorConversion, kItemConversion);
        }
        source += tag.PackedLen();
        values += tag.GetVarLength();
    }
    return true;
}

/** Returns the tag's status, and makes it the last error when the tag was not found. */
idal_error_t EntryPoints::reportStatus(Tag_VELK const& tag) {
    if (tag.status() != kItemGood) {
        session_.errors.failNaming("tag ", tag.variableName().c_str(), " not present in symbol file");
    }
    return tag.status();
}

bool EntryPoints::readImage(ITag const* const* tags, int count, std::span<unsigned char> image) {
    if (velkTag(*tags[0]).isProjectIdentifier()) {
        putIdentifier(velkTag(*tags[0]), image);
        return true;
    }
    return attempt(false, tags, count, image.data(), 0);
}

bool EntryPoints::writeValue(ITag const* tag, unsigned char const* value) {
    if (!session_.link.requireOpen()) {
        return false;
    }
    if (tag == nullptr || value == nullptr) {
        return session_.errors.fail(kErrorRequest, kInvalidArgument);
    }
    if (tag->IsReadOnly()) {
        return session_.errors.fail(kErrorRequest, "writing to read_only type");
    }
    int const packedLength = tag->PackedLen();
    if (refuseImage(&tag, 1, packedLength, true)) {
        return false;
    }
    BlockPlace const place(velkTag(*tag), packedLength);
    Image image(std::max(std::int64_t{packedLength} + kWriteMargin, place.length));
    if (!image.available()) {
        return session_.errors.fail(kErrorPort, ProtUtilsN::kOutOfMemoryText);
    }
    bool const isWholeElement = place.skip == 0 && place.length == packedLength;
    if (!isWholeElement && !fillBlock(tag, image.bytes(), static_cast<int>(place.length))) {
        return false;
    }
    if (!tag->ConvertVariable(value, image.bytes().data() + place.skip, true)) {
        return session_.errors.fail(kErrorConversion, "write conversion error");
    }
    if (velkTag(*tag).isProjectIdentifier()) {
        // Deliberately reported as written although nothing is sent.
        return true;
    }
    // Deliberately sends the first bytes of the image, even for a part of an element.
    return attempt(true, &tag, 1, image.bytes().data(), 0);
}

bool EntryPoints::writeList(ITag const* const* tags, int count, unsigned char const* values) {
    if (!areTags(tags, count) || (values == nullptr && count > 0)) {
        return session_.errors.fail(kErrorRequest, kInvalidArgument);
    }
    std::int64_t const length = imageLength(tags, count);
    if (refuseImage(tags, count, length, true)) {
        return false;
    }
    Image image(length);
    if (!image.available()) {
        return session_.errors.fail(kErrorPort, ProtUtilsN::kOutOfMemoryText);
    }
    unsigned char* destination = image.bytes().data();
    for (int i = 0; i < count; ++i) {
        if (!tags[i]->ConvertVariable(values, destination, true)) {
            return session_.errors.fail(kErrorConversion, kItemConversion);
        }
        values += tags[i]->GetVarLength();
        destination += tags[i]->PackedLen();
    }
    return attempt(true, tags, count, image.bytes().data(), 0);
}

/** Repeats the access until it succeeds, at most as often as configured for the node of tags[0]. */
bool EntryPoints::attempt(bool write, ITag const* const* tags, int count, unsigned char* image, int length) {
    if (!session_.link.requireOpen()) {
        return false;
    }
    for (int left = session_.params.getNodeParams(velkTag(*tags[0]).nodeId())->repeat; left > 0; --left) {
        session_.link.drain();
        if (ListAccess(session_, ident_).run(write, tags, count, image, length)) {
            return true;
        }
    }
    return false;
}

/**
 * Refuses, before allocating memory, what the link's buffers can never hold. A call that fails before it needs the
 * buffers keeps its own reason.
 */
bool EntryPoints::refuseImage(ITag const* const* tags, int count, std::int64_t length, bool write) {
    if (length <= static_cast<std::int64_t>(kDataLength)) {
        return false;
    }
    if (session_.link.requireOpen() && requireItemLimit(session_, tags, count)) {
        session_.errors.fault(kErrorRequest, write ? kTxExceeded : kRxExceeded);
    }
    return true;
}

} // namespace _VELK
