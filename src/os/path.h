// Path names as text: DOS-shaped paths (drive, colon, backslashes, 8.3
// names) worked on in place in the caller's buffers of 256 bytes. Nothing
// here touches the disk but to ask for the current directory; only bosstcwd
// changes anything, and nothing reports an error.
#ifndef ZUUTL_OS_PATH_H
#define ZUUTL_OS_PATH_H

#include "frame/api.h"
#include "frame/status.h"

// Splits `path`: `name` (9 bytes) gets the base name cut to 8, `extension`
// (4 bytes) the extension cut to 3, and `path` keeps its directory part with
// its final backslash or colon.
ZU_API void bospname(unsigned char* path, unsigned char* name, unsigned char* extension);
// A full path from a name and defaults, either of which may be null. A name
// with a drive or directory of its own does not get the default directory.
ZU_API void bospath(unsigned char* result, const unsigned char* defaultDirectory,
                    const unsigned char* name, const unsigned char* defaultExtension);
// Makes `path` full and upper case, in place: drive, colon, root, with
// "\..\" folded. Network names and names with a colon elsewhere than after
// the drive are only upper-cased.
ZU_API void bosfpath(unsigned char* path);
// Cuts off what `path` has in common with the current directory.
ZU_API void bosmpath(unsigned char* path);
// The current directory, into at least 256 bytes; with `addBackslash` not
// 0, ending in a backslash.
ZU_API void bosgtcwd(unsigned char* buffer, unsigned short addBackslash);
// Sets the current directory for the whole process. `drive` is not used; a
// directory that is not there is not noticed. Always ZU_OK.
ZU_API ZuStatus bosstcwd(const unsigned char* path, unsigned short drive);
// The next line of `text` from *offset into `line` (maxLength + 1 bytes).
// *result: the line's length, -1 at the end of the text, -2 when the line is
// longer than maxLength; *offset moves only on success. A line feed inside
// quotes stays in the line; a line starting with ';' comes back as ";".
ZU_API void bosgetbl(const unsigned char* text, unsigned short* offset, unsigned char* line,
                     unsigned short maxLength, short* result);

#endif
