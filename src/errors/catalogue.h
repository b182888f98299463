// The message catalogue: every text the library can say, compiled in, looked
// up by 16-bit id, with exact bytes.
#ifndef ZUUTL_ERRORS_CATALOGUE_H
#define ZUUTL_ERRORS_CATALOGUE_H

#include <cstdint>
#include <span>

#include "frame/from_above.h"  // catalogueLoad, which the frame's reports use

namespace zu {

// Longest text a load hands back; the loader cuts longer rows here.
constexpr int kCatalogueTextMax = 511;

struct CatalogueRow {
  std::uint16_t id;
  const char* text;
};

// Every row, in ascending order of id.
std::span<const CatalogueRow> catalogueRows();

// The stored row, or null for an unknown id.
const char* catalogueRow(std::uint16_t id);

// Copies `text` (null counts as empty) into `buffer` of `size` bytes, cut to
// size - 1 and never beyond kCatalogueTextMax, NUL terminated, as the
// platform's string loader does. Returns the bytes copied.
int catalogueCopy(const char* text, unsigned char* buffer, int size);

}  // namespace zu

#endif
