// The exported copies choose their body once, when the library is loaded,
// as the C library's own copies do: 32-byte moves where the processor has
// them, 16-byte moves elsewhere. A short copy is as many stores as pieces,
// and at 64 bytes the store count is what separates two copies.
//
// Only x86-64 chooses; every other build has the 16-byte bodies alone.
#ifndef ZUUTL_STRINGS_WIDE_COPY_H
#define ZUUTL_STRINGS_WIDE_COPY_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

#if defined(__x86_64__) && defined(__GNUC__)
#define ZU_WIDE_COPIES 1
#else
#define ZU_WIDE_COPIES 0
#endif

// The wide bounded copy reads whole aligned blocks around the text, which a
// sanitizer may not check; a sanitized build keeps the C library's measure,
// whose reads and the copy's writes the sanitizer does check.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZU_WIDE_SCAN_COPY 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZU_WIDE_SCAN_COPY 0
#endif
#endif
#ifndef ZU_WIDE_SCAN_COPY
#define ZU_WIDE_SCAN_COPY ZU_WIDE_COPIES
#endif

// Defines the exported `name`, of function type `Type`, as `narrow` or, where
// the processor has 32-byte moves, `wide`. The choice is made once, by a
// resolver the loader runs, so a call costs what any call into the
// library costs.
#if ZU_WIDE_COPIES
#define ZU_CHOOSE_AT_LOAD(Type, resolver, name, narrow, wide)                           \
  extern "C" {                                                                          \
  __attribute__((visibility("hidden"), no_sanitize("address", "thread", "undefined")))  \
  std::type_identity_t<Type>* resolver() {                                              \
    __builtin_cpu_init();                                                               \
    if (__builtin_cpu_supports("avx2")) return wide;                                    \
    return narrow;                                                                      \
  }                                                                                     \
  }                                                                                     \
  std::type_identity_t<Type> name __attribute__((ifunc(#resolver)));
#endif

namespace zu::bytes {

// The text copies with 16-byte moves, to which the wide ones leave long or
// overlapping copies.
void boundedCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src);
unsigned char* countedCopy(unsigned char* dst, const unsigned char* src, std::uint32_t count);

}  // namespace zu::bytes

#if ZU_WIDE_COPIES
namespace zu::bytes::wide {

// The exported copies of the same names, with 32-byte moves; only chosen
// where the processor has them.
void butMemcp(unsigned char* dst, const unsigned char* src, unsigned short count);
void butMmcpd(unsigned char* dst, const unsigned char* src, unsigned short count);
void memCopyHuge(void* dst, const void* src, std::uint32_t count);
unsigned char* strCopy(unsigned char* dst, const unsigned char* src, std::uint32_t count);
void strCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src);

}  // namespace zu::bytes::wide
#endif

#endif
