#include "frame/object.h"

ZuObject::~ZuObject() = default;

short ZuObject::compare(const ZuObject* /*other*/) const { return 0; }
