#pragma once

#include <span>

/**
 * The document that describes this driver to the configuration tool: VELK.xml, compressed when the module is built.
 *
 * The container Xml_VELK, H being the length of its header:
 *
 *     0          "<<ICOM_XML_START>>"
 *     18         "Name=VELK?FullName=Velk Serial Link?Version=144?Platform=KQ47_LIN"
 *     H          a zero byte
 *     H + 1      "compressedXML=2055": the number of bytes of the stream, in decimal
 *     H + 19     a zero byte
 *     H + 20     the document as a zlib stream (RFC 1950), 2,055 bytes; 13,595 when inflated
 *     H + 2075   "<<ICOM_XML_END>>"
 *     H + 2091   a zero byte
 */

/** The container from the text "compressedXML=" on. Never null, and the same pointer on every call. */
char const* GetXml_VELK() noexcept;

namespace _VELK {

/** The whole container. */
std::span<unsigned char const> xmlContainer() noexcept;

} // namespace _VELK
