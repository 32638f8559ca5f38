#pragma once

#include "interfaces/ItemStatus.h"

#include <cstdint>
#include <span>

class ITag;
class Tag_VELK;

namespace _VELK {

struct Session;

/**
 * The part common to the host's reads and writes: converts values from and to an image in the PLC's representation, and
 * attempts the exchange of the image as often as configured for the node. May throw std::bad_alloc.
 */
class EntryPoints {
public:
    /** @p ident is the instance's name for the host. */
    EntryPoints(Session& session, char const* ident) : session_(session), ident_(ident) {}

    /** Whether an exchange can carry the tag's value at all; when not, the last error says why a read of it fails. */
    bool canCarry(ITag const* tag);

    /** Protocol_VELK::ReadBlock(). */
    bool readElements(ITag const* tag, unsigned char* bytes, int length);

    /** Reads the tags and converts their values; with @p status also reports on each. */
    bool readList(ITag const* const* tags, int count, unsigned char* values, idal_error_t* status);

    /** Reads the tags in the PLC's representation; @p image holds their PackedLen() bytes, one after the other. */
    bool readImage(ITag const* const* tags, int count, std::span<unsigned char> image);

    bool writeValue(ITag const* tag, unsigned char const* value);
    bool writeList(ITag const* const* tags, int count, unsigned char const* values);

private:
    bool fillBlock(ITag const* tag, std::span<unsigned char> image, int length);
    bool attempt(bool write, ITag const* const* tags, int count, unsigned char* image, int length);
    bool refuseImage(ITag const* const* tags, int count, std::int64_t length, bool write);
    idal_error_t reportStatus(Tag_VELK const& tag);

    Session& session_;
    char const* ident_;
};

} // namespace _VELK
