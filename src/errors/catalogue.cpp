#include "errors/catalogue.h"

#include <cstring>

namespace zu {
namespace {

struct Row {
  std::uint16_t id;
  const char* text;
};

// Sorted by id.
constexpr Row kRows[] = {
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
};

}  // namespace

const char* catalogueRow(std::uint16_t id) {
  const Row* first = kRows;
  const Row* last = kRows + sizeof(kRows) / sizeof(kRows[0]);
  while (first < last) {
    const Row* mid = first + (last - first) / 2;
    if (mid->id < id) {
      first = mid + 1;
    } else {
      last = mid;
    }
  }
  return (first != kRows + sizeof(kRows) / sizeof(kRows[0]) && first->id == id) ? first->text
                                                                               : nullptr;
}

int catalogueLoad(std::uint16_t id, unsigned char* buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  const char* row = catalogueRow(id);
  std::size_t length = row != nullptr ? std::strlen(row) : 0;
  std::size_t room = static_cast<std::size_t>(size - 1);
  if (room > static_cast<std::size_t>(kCatalogueTextMax)) room = kCatalogueTextMax;
  if (length > room) length = room;
  if (length != 0) std::memcpy(buffer, row, length);
  buffer[length] = 0;
  return static_cast<int>(length);
}

}  // namespace zu
