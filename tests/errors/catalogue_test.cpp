#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "errors/catalogue.h"

namespace {

struct Expected {
  std::uint16_t id;
  const char* text;
};

// Written out independently of the library's table, so that a slip in one is
// caught by the other.
const Expected kExpected[] = {
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
    {1511, "You must run SHARE when locking is enabled or you must set Locking=NONE in your "
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

constexpr int kLoadBuffer = 512;

std::string load(std::uint16_t id, int size = kLoadBuffer) {
  unsigned char buffer[kLoadBuffer + 1];
  std::memset(buffer, 'x', sizeof buffer);
  int copied = zu::catalogueLoad(id, buffer, size);
  std::string text(reinterpret_cast<const char*>(buffer));
  EXPECT_EQ(copied, static_cast<int>(text.size()));
  return text;
}

}  // namespace

TEST(Catalogue, EveryRowWithItsExactBytesAndNoOthers) {
  for (const Expected& e : kExpected) {
    SCOPED_TRACE(e.id);
    const char* row = zu::catalogueRow(e.id);
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row, e.text);
    EXPECT_EQ(load(e.id), e.text);
  }
  auto rows = zu::catalogueRows();
  ASSERT_EQ(rows.size(), std::size(kExpected));
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].id, kExpected[i].id);
}

TEST(Catalogue, UnknownIdsLoadEmpty) {
  // Gaps between rows and both ends of the 16-bit range.
  for (std::uint16_t id : {0, 1499, 1505, 1519, 2711, 30044, 30191, 65535}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(zu::catalogueRow(id), nullptr);
    EXPECT_EQ(load(id), "");
  }
}

TEST(Catalogue, LoadsAreCutLikeTheStringLoader) {
  EXPECT_EQ(load(30190, 4), "Out");
  EXPECT_EQ(load(30190, 1), "");

  std::string longText;
  for (int i = 0; i < zu::kCatalogueTextMax + 40; ++i) longText += static_cast<char>('a' + i % 26);
  unsigned char buffer[kLoadBuffer + 64];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(zu::catalogueCopy(longText.c_str(), buffer, sizeof buffer), zu::kCatalogueTextMax);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer)),
            longText.substr(0, zu::kCatalogueTextMax));
}
