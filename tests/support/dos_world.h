// A private DOS world for each test: drives C: and D: mapped to fresh
// directories under a temporary host directory (never the real root), the
// temporary directory at C:\TEMP, the current directory C:\ (the process's,
// put back at the end), and an error
// list of the test's own. At the end it proves that no descriptor, handle or
// DOS table entry was left behind.
#ifndef ZU_TESTS_SUPPORT_DOS_WORLD_H
#define ZU_TESTS_SUPPORT_DOS_WORLD_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "errors/error_list.h"
#include "platform/dos.h"

namespace zutest {

inline const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
inline const unsigned char* u(const std::string& text) { return u(text.c_str()); }
inline std::string s(const unsigned char* text) { return reinterpret_cast<const char*>(text); }

// Descriptors the process holds now.
int openDescriptors();

class DosWorld : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Host path of a DOS-relative place: host("c/TEMP").
  std::string host(const std::string& relative) const { return root_ + "/" + relative; }
  void writeHost(const std::string& relative, const std::string& content) const;
  std::string readHost(const std::string& relative) const;
  bool hostExists(const std::string& relative) const;
  // Names in a host directory, sorted.
  std::vector<std::string> hostNames(const std::string& relative) const;
  // Sets (null: clears) a variable for this test and reloads the DOS view.
  void setVariable(const char* name, const char* value);

  // The errors recorded since the last call, oldest first, as number and text.
  std::vector<std::pair<unsigned short, std::string>> takeErrors();
  // The one error recorded since the last call; "" when not exactly one.
  std::string onlyError();

 private:
  std::string root_;
  std::string cwd_;
  int descriptors_ = 0;
  ZuErrorList list_;
  std::vector<std::pair<std::string, std::string>> saved_;  // name, old value ("\1" = unset)
};

}  // namespace zutest

#endif
