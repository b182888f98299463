// The one reading of the process environment, shared by bosGetEnv and the
// DOS view.
#ifndef ZUUTL_PLATFORM_ENVIRONMENT_H
#define ZUUTL_PLATFORM_ENVIRONMENT_H

namespace zu::platform {

// The value of the first entry whose first bytes are `name`, compared case-
// sensitively over the name's length; the byte after the name is taken to be
// '=' and not looked at, so a longer name that begins alike matches when it
// comes first. Points into the environment, read in place; an entry that is
// just the name gives an empty text. Null when nothing matches.
unsigned char* environmentValue(const unsigned char* name);

}  // namespace zu::platform

#endif
