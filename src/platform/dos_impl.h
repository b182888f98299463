// The host implementations behind the default DOS table.
#ifndef ZUUTL_PLATFORM_DOS_IMPL_H
#define ZUUTL_PLATFORM_DOS_IMPL_H

#include "platform/dos.h"

namespace zu::platform::files {

ErrorClass fileOpen(const unsigned char* name, unsigned mode, int* handle);
ErrorClass fileRead(int handle, void* buffer, std::uint32_t size, std::uint32_t* done);
ErrorClass fileReadAt(int handle, std::uint32_t position, void* buffer, std::uint32_t size, std::uint32_t* done);
ErrorClass fileWrite(int handle, const void* buffer, std::uint32_t size, std::uint32_t* done);
ErrorClass fileSeek(int handle, std::int32_t offset, unsigned short origin, std::uint32_t* position);
ErrorClass fileClose(int handle);
ErrorClass fileLockRegion(int handle, bool unlock, std::uint32_t length);
ErrorClass fileCommit(int handle);
ErrorClass fileRemove(const unsigned char* name);
ErrorClass fileRename(const unsigned char* from, const unsigned char* to);
ErrorClass fileAttributes(const unsigned char* name, unsigned* bits);
ErrorClass tempFile(const unsigned char* directory, const char* prefix, unsigned char* name);

void* findFirst(const unsigned char* pattern, unsigned char* name);
bool findNext(void* search, unsigned char* name);
void findClose(void* search);

bool moduleFile(char* path, std::size_t size);
void* loadBeside(const unsigned char* stem);
void utcNow(UtcTime* time);
std::uint32_t tickMs();
bool nextKey(unsigned* message, unsigned* key);
void beep();

// Handles in use, for tests that prove nothing is left open.
int openHandleCount();

}  // namespace zu::platform::files

#endif
