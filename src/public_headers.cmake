# The umbrella header and every header it pulls in, relative to src/.
set(ZU_PUBLIC_HEADERS
  zuutl.h
  frame/api.h
  frame/types.h
  frame/status.h
  frame/object.h
  frame/task.h
  frame/thread.h
  frame/semaphore.h
  memory/ram.h
  containers/list.h
  strings/bytes.h
  strings/compare.h
  strings/like.h
  strings/convert.h
  strings/hex.h
)
