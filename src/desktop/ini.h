// ZuIni: one initialisation file of sections and entries, named once and
// then read and written entry by entry. It holds no contents: each call
// goes to the private-profile services on the file's name, so several
// objects, or processes, on one file always see each other's writes.
//
// Closed (fileName null) or open (fileName holds a copy of the name). Every
// read and write fails with row 2717 on a closed object; on an open one
// they succeed whatever the file gives: a missing file, section or entry
// reads as the default, and a refused write is not reported.
#ifndef ZUUTL_DESKTOP_INI_H
#define ZUUTL_DESKTOP_INI_H

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"

class ZU_API ZuIni : public ZuObject {
 public:
  ZuIni() : fileName(nullptr) {}
  // Closes with this class's own close, whatever a subclass made of it.
  ~ZuIni() override;
  ZuIni(const ZuIni&) = delete;
  ZuIni& operator=(const ZuIni&) = delete;

  // Takes a copy of the name; the file need not exist. An open object is
  // closed first, through the virtual close. A null name leaves it closed,
  // with row 2717.
  virtual ZuStatus open(unsigned char const* fileName);
  // Forgets the name; ZU_OK also when closed.
  virtual ZuStatus close();

  // The entry's text, cut to fit `bufferSize` and NUL-terminated, or
  // `defaultValue`. With `entry` null the buffer gets the section's entry
  // names, with `section` null the section names, each ending in a NUL and
  // the list in one more.
  ZuStatus getEntry(unsigned char const* section, unsigned char const* entry, unsigned char* buffer,
                    unsigned short bufferSize, unsigned char const* defaultValue);
  // The leading decimal number of the entry, cut to 16 bits, or `defaultValue`.
  ZuStatus getEntry(unsigned char const* section, unsigned char const* entry, short* value,
                    short defaultValue);
  // Writes or replaces the entry; the first write creates the file.
  ZuStatus writeEntry(unsigned char const* section, unsigned char const* entry, unsigned char const* value);
  ZuStatus deleteEntry(unsigned char const* section, unsigned char const* entry);
  // The section with all its entries.
  ZuStatus deleteSection(unsigned char const* section);

  unsigned char* fileName;

 protected:
  // ZU_OK when open; otherwise row 2717 and ZU_ERROR.
  ZuStatus validState();
};

#endif
