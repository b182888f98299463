#include "errors/memory_failure.h"

#include "errors/keeper.h"

namespace zu {

void recordMemoryFailure() { ZuErrorKeeper::addMemoryError(); }

}  // namespace zu
