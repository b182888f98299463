// The message catalogue: every text the library can say, compiled in, looked
// up by 16-bit id, with exact bytes.
#ifndef ZUUTL_ERRORS_CATALOGUE_H
#define ZUUTL_ERRORS_CATALOGUE_H

#include <cstdint>

namespace zu {

// Longest text a load hands back; the loader cuts longer rows here.
constexpr int kCatalogueTextMax = 511;

// The stored row, or null for an unknown id.
const char* catalogueRow(std::uint16_t id);

// Copies row `id` into `buffer` of `size` bytes, cut to size - 1 and NUL
// terminated, as the platform's string loader does. Returns the bytes copied;
// 0 (and an empty text) for an unknown id.
int catalogueLoad(std::uint16_t id, unsigned char* buffer, int size);

}  // namespace zu

#endif
