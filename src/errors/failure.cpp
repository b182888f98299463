// The errors' side of the bottom's failure path (frame/from_above.h).
#include "errors/keeper.h"
#include "errors/message.h"
#include "errors/static_records.h"
#include "frame/from_above.h"
#include "strings/substring.h"

namespace zu {

void recordFailure(unsigned short number, const unsigned char* quoted, std::uint32_t length) {
  // The shared record: running out of memory must not need memory.
  if (number == kOutOfMemory) {
    ZuErrorKeeper::addMemoryError();
    return;
  }
  ZuError& record = addMessageError(number);
  if (quoted != nullptr) record << ZuSubString(quoted, length);
}

}  // namespace zu
