// The allocator's failure path: records that memory ran out on the calling
// thread's error list. Must be called with no heap or thread-table lock held.
#ifndef ZUUTL_ERRORS_MEMORY_FAILURE_H
#define ZUUTL_ERRORS_MEMORY_FAILURE_H

namespace zu {
void recordMemoryFailure();
}

#endif
