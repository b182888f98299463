// Shared by the container tests: a thread record with a list of the test's
// own, so the errors that refusals raise can be read back, and an object
// that counts its deaths.
#ifndef ZU_TESTS_CONTAINERS_FIXTURE_H
#define ZU_TESTS_CONTAINERS_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>

#include "errors/keeper.h"
#include "frame/object.h"
#include "frame/thread.h"
#include "support/error_fixture.h"

namespace zutest {

// The contract's figures, written out here rather than taken from the code.
inline constexpr unsigned short kArrayTooLarge = 2722;
inline constexpr std::uint32_t kLimit = 16000;

using ContainerTest = ErrorFixture;

struct Counted : ZuObject {
  explicit Counted(int* deaths) : deaths(deaths) {}
  ~Counted() override { ++*deaths; }
  int* deaths;
};

// Numbers ride in the pointer-sized slots.
inline ZuObject* tag(std::uintptr_t n) { return reinterpret_cast<ZuObject*>(n); }
inline std::uintptr_t untag(const ZuObject* p) { return reinterpret_cast<std::uintptr_t>(p); }

}  // namespace zutest

#endif
