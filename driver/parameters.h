// The values of ? markers at execution, from what SQLBindParameter gave.
#ifndef ZUCSV_PARAMETERS_H
#define ZUCSV_PARAMETERS_H

#include <vector>

#include "handles.h"
#include "value.h"

namespace zucsv {

// false with 07002 for a marker without a binding, HYC00 for a C type not
// supported.
// Whether the binding's value comes through SQLPutData.
bool isAtExecution(const ParameterBinding& b);

bool parameterValues(const Statement& stmt, int count, std::vector<Value>* values);

}  // namespace zucsv

#endif
