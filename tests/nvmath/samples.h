// Short makers of host values, and a printable view of a value's kind tests.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "NvMathLib.h"

namespace sample {

using NuvarelMath::ValueTypes::nvValue;
namespace vt = NuvarelMath::ValueTypes;

inline nvValue null() { return nvValue(); }
inline nvValue boolean(bool b) { return vt::nvBoolean(b); }
inline nvValue integer(long long i) { return vt::nvInteger(i); }
inline nvValue real(double x) { return vt::nvDouble(x); }
inline nvValue text(const std::string& s) { return vt::nvSymbolicValue(s, true, {}); }
inline nvValue handle(void* address) { return vt::nvInteger(static_cast<nvValue*>(address)); }

inline nvValue vector(std::initializer_list<nvValue> items) {
    vt::nvVector v(static_cast<unsigned>(items.size()), false, true, false);
    unsigned i = 0;
    for (const auto& item : items) v.setValue(item, i++);
    return v;
}

// Cells row by row.
inline nvValue matrix(unsigned rows, unsigned columns, std::initializer_list<nvValue> cells) {
    vt::nvMatrix m(rows, columns, true, false, false);
    unsigned i = 0;
    for (const auto& cell : cells) {
        m.setValue(cell, i / columns, i % columns);
        ++i;
    }
    return m;
}

inline nvValue table(std::initializer_list<const char*> names, unsigned rows,
                     std::initializer_list<nvValue> cells) {
    nvValue m = matrix(rows, static_cast<unsigned>(names.size()), cells);
    std::vector<nvValue> column_names;
    for (const char* name : names) column_names.push_back(text(name));
    m.setColumnNames(column_names);
    return m;
}

// The kind tests that hold, in a fixed order: "double unsigned".
inline std::string kinds(const nvValue& v) {
    const std::pair<bool, const char*> tests[] = {
        {v.isNull(), "null"},     {v.isBoolean(), "boolean"}, {v.isInteger(), "integer"},
        {v.isDouble(), "double"}, {v.isUnsignedInteger(), "unsigned"}, {v.isString(), "string"},
        {v.isVector(), "vector"}, {v.isMatrix(), "matrix"},   {v.isNumericVectorOrMatrix(), "numeric"},
    };
    std::string out;
    for (const auto& [holds, name] : tests)
        if (holds) out += (out.empty() ? "" : " ") + std::string(name);
    return out;
}

}  // namespace sample
