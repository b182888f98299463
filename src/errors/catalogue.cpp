#include "errors/catalogue.h"

#include <cstring>

namespace zu {
namespace {

// Sorted by id; the lookup is a binary search. Texts are the exact bytes that
// clients see: blanks at either end and doubled blanks are part of a row.
constexpr CatalogueRow kRows[] = {
    {1500, "Not enough memory for data transfer - message truncated."},
    {1501, "Cannot create file '%s1'."},
    {1502, "Cannot delete file: '%s1'."},
    {1503, "Not enough memory for this command."},
    {1504, "Cannot set current working directory to '%s1'."},
    {1506, "Insufficient disk space."},
    {1507, "Invalid file handle."},
    {1508, "Access to file denied '%s1'."},
    {1509, "File not found '%s1'."},
    {1510, "Path not found '%s1'."},
    {1511,
     "You must run SHARE when locking is enabled or you must set Locking=NONE in your "
     "ODBC.INI file."},
    {1512, "Whole or part of the region has already been locked."},
    {1513, "Unable to unlock record."},
    {1514, "Lock failed!  SHARE buffers have been exceeded."},
    {1515, "Unable to load help file."},
    {1516, "Not a DOS disk"},
    {1517, "Invalid Parameter"},
    {1518, "File read locks not supported"},
    {1524, "Semaphore Pool Allocation Information"},
    {1525, "Per Semaphore Allocation Information"},
    {1526, "Semaphore Request Type"},
    {1527, "Semaphore Allocated Type"},
    {1528, "Real System Semaphore"},
    {1529, "Spin Lock Semaphore"},
    {1530, "Semaphore OS Limit"},
    {1531, "Semaphore Spin Count"},
    {1532, "Semaphore Thread yield time"},
    {1533, "Semaphore Set ID"},
    {1534, "Semaphores per set"},
    {1535, "Semaphore Number"},
    {1536, "Semaphore Allocation error"},
    {1537, "Per Semaphore Deallocation Information"},
    {2700, "Token too big: %s1"},
    {2701, "Number too large: %s1"},
    {2702, "Number contains an invalid character: %s1"},
    {2703, "Unmatched quote character: %s1"},
    {2704, "Error parsing connect string at offset %n1. "},
    {2705, "Error parsing %s2 at offset %n1."},
    {2706, " Attribute '%s1' specified more than once."},
    {2707, " Attribute specified twice using keywords '%s1' and '%s2'."},
    {2708, "Invalid hexidecimal character found during conversion."},
    {2709, "Quicksort stack overflow"},
    {2710, "Too many sort keys."},
    {2716, "Cannot handle strings larger than 65500 bytes."},
    {2717, "Initialization file is not open."},
    {2719, "Could not create trace window."},
    {2720, "Error parsing first line of query file: %s1"},
    {2721, "Could not get needed access to '%s1'."},
    {2722, "Can not increase internal array size past 16000."},
    {30040, "Cannot open file '%s1'."},
    {30041, "Error on input or output to a file."},
    {30042, "Cannot rename '%s1' to '%s2'."},
    {30043, "Not enough memory for this command."},
    {30045, "The maximum number of files are already open."},
    {30047, "Reserved file name cannot be opened '%s1'."},
    {30048, "Insufficient memory to start Zu."},
    {30190, "Out of memory."},
};

constexpr std::size_t kRowCount = sizeof(kRows) / sizeof(kRows[0]);

constexpr bool strictlySorted() {
  for (std::size_t i = 1; i < kRowCount; ++i) {
    if (kRows[i - 1].id >= kRows[i].id) return false;
  }
  return true;
}
static_assert(strictlySorted(), "catalogue rows must stay sorted by id, each id once");

}  // namespace

std::span<const CatalogueRow> catalogueRows() { return {kRows, kRowCount}; }

const char* catalogueRow(std::uint16_t id) {
  const CatalogueRow* first = kRows;
  const CatalogueRow* last = kRows + kRowCount;
  while (first < last) {
    const CatalogueRow* mid = first + (last - first) / 2;
    if (mid->id < id) {
      first = mid + 1;
    } else {
      last = mid;
    }
  }
  return (first != kRows + kRowCount && first->id == id) ? first->text : nullptr;
}

int catalogueCopy(const char* text, unsigned char* buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  std::size_t length = text != nullptr ? std::strlen(text) : 0;
  std::size_t room = static_cast<std::size_t>(size - 1);
  if (room > static_cast<std::size_t>(kCatalogueTextMax)) room = kCatalogueTextMax;
  if (length > room) length = room;
  if (length != 0) std::memcpy(buffer, text, length);
  buffer[length] = 0;
  return static_cast<int>(length);
}

int catalogueLoad(std::uint16_t id, unsigned char* buffer, int size) {
  return catalogueCopy(catalogueRow(id), buffer, size);
}

}  // namespace zu
