// The task-record provider: one record per process, built on first use so
// that it is ready whichever library's static constructors run first.
#include "frame/task.h"

ZuTaskInfo::ZuTaskInfo() : initCount(1), slots{} {}

ZuTaskInfo::~ZuTaskInfo() = default;

ZuTaskInfo* mdsGetTaskInfo() {
  static ZuTaskInfo record;
  return &record;
}
