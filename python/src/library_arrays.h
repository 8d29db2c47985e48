#ifndef IMGTUNE_PYTHON_LIBRARY_ARRAYS_H
#define IMGTUNE_PYTHON_LIBRARY_ARRAYS_H

#include <fmt/format.h>

#include <cstring>

#include "binding.h"

// How the exported functions' records pass as arrays.

namespace imgtune::python {

void bind_ccm_functions(py::module_& library);

template <class Number>
using Array = py::array_t<Number, py::array::c_style | py::array::forcecast>;
using Words = Array<std::uint32_t>;
using Floats = Array<float>;

/// The words of an array of exactly this size; anything else is refused.
template <class Record, class Number>
Record record_of(const Array<Number>& array, const char* name) {
    static_assert(sizeof(Record) % sizeof(Number) == 0);
    constexpr std::size_t kCount = sizeof(Record) / sizeof(Number);
    if (static_cast<std::size_t>(array.size()) != kCount) {
        raise_input_error(
            fmt::format("{} has {} values, {} are needed", name, array.size(), kCount), name);
    }
    Record record;
    std::memcpy(&record, array.data(), sizeof(record));
    return record;
}

/// A record's values in one dimension.
template <class Number, class Record>
py::array_t<Number> array_of(const Record& record) {
    static_assert(sizeof(Record) % sizeof(Number) == 0);
    py::array_t<Number> values(static_cast<py::ssize_t>(sizeof(Record) / sizeof(Number)));
    std::memcpy(values.mutable_data(), &record, sizeof(record));
    return values;
}

}  // namespace imgtune::python

#endif
