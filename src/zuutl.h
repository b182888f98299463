// zuutl04: the utility library beneath a family of ODBC drivers.
// Clients include this header and nothing else.
#ifndef ZUUTL_H
#define ZUUTL_H

#include "frame/api.h"
#include "frame/types.h"
#include "frame/status.h"
#include "frame/object.h"
#include "frame/task.h"
#include "frame/thread.h"
#include "frame/semaphore.h"
#include "frame/handles.h"
#include "memory/ram.h"
#include "containers/list.h"
#include "strings/bytes.h"
#include "strings/compare.h"
#include "strings/like.h"
#include "strings/convert.h"
#include "strings/hex.h"
#include "strings/string.h"
#include "os/file.h"
#include "os/path.h"
#include "os/system.h"
#include "strings/param_string.h"
#include "strings/replace_string.h"
#include "errors/error.h"
#include "errors/error_list.h"
#include "errors/keeper.h"
#include "parsing/scanner.h"
#include "parsing/value_parser.h"
#include "containers/array.h"
#include "containers/set.h"
#include "containers/association.h"
#include "containers/dictionary.h"
#include "containers/bit_array.h"

#endif
