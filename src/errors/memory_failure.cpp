#include "errors/memory_failure.h"

namespace zu {

// Until the error lists exist there is nowhere to record to; the caller's
// null or ZU_ERROR is the whole report.
void recordMemoryFailure() {}

}  // namespace zu
