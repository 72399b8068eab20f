// Byte-string search for the narrow text searches: the lowest or highest place where a
// needle stands in a haystack, as a plain scan with memcmp would find it.
#ifndef TESSERA_TEXT_BYTESEARCH_H
#define TESSERA_TEXT_BYTESEARCH_H

#include <cstddef>

namespace Tessera::detail {

// First place in the `size` bytes of `haystack` where the `length` bytes of `needle` stand,
// or null. Needs 1 <= length <= size.
const char* FindBytes(const char* haystack, std::size_t size, const char* needle,
                      std::size_t length);

// Last such place, or null. Needs 1 <= length <= size.
const char* FindBytesReverse(const char* haystack, std::size_t size, const char* needle,
                             std::size_t length);

}  // namespace Tessera::detail

#endif  // TESSERA_TEXT_BYTESEARCH_H
