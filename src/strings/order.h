// Three-way results as the library gives them.
#ifndef ZUUTL_STRINGS_ORDER_H
#define ZUUTL_STRINGS_ORDER_H

namespace zu::bytes {

inline short threeWay(int difference) {
  return static_cast<short>((difference > 0) - (difference < 0));
}

}  // namespace zu::bytes

#endif
