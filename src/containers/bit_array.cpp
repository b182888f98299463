#include "containers/bit_array.h"

ZuBitArray::~ZuBitArray() { ramFree(bits); }
