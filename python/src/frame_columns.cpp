#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "binding.h"

namespace imgtune::python {

namespace {

using workbench::FrameColumn;
using workbench::FrameValues;
using workbench::kFrameColumns;

constexpr std::size_t kFullGain = 2;  ///< first column of each triple
constexpr std::size_t kAwbGain = 5;
constexpr std::size_t kBlock = 64;  ///< frames that are taken at a time

/// One number in memory, of any whole type and byte order.
template <class Number, bool Swapped>
std::int64_t load_one(const char* from) {
    char bytes[sizeof(Number)];
    std::memcpy(bytes, from, sizeof(bytes));
    if constexpr (Swapped) std::reverse(std::begin(bytes), std::end(bytes));
    Number value;
    std::memcpy(&value, bytes, sizeof(value));
    if constexpr (std::is_same_v<Number, std::uint64_t>) {
        value = std::min<std::uint64_t>(value, std::numeric_limits<std::int64_t>::max());
    }
    return static_cast<std::int64_t>(value);
}

/// A run of a column into one column of rows.
template <class Number, bool Swapped>
void load(const char* from, py::ssize_t stride, std::size_t count, std::int64_t* out) {
    for (std::size_t i = 0; i < count; ++i, from += stride, out += kFrameColumns.size()) {
        *out = load_one<Number, Swapped>(from);
    }
}

using Load = void (*)(const char*, py::ssize_t, std::size_t, std::int64_t*);

template <bool Swapped>
Load loader(char kind, py::ssize_t size) {
    const bool is_signed = kind == 'i';
    switch (size) {
        case 1:
            return is_signed ? load<std::int8_t, false> : load<std::uint8_t, false>;
        case 2:
            return is_signed ? load<std::int16_t, Swapped> : load<std::uint16_t, Swapped>;
        case 4:
            return is_signed ? load<std::int32_t, Swapped> : load<std::uint32_t, Swapped>;
        default:
            return is_signed ? load<std::int64_t, Swapped> : load<std::uint64_t, Swapped>;
    }
}

/// Whether every number of a type is in a column's range.
bool always_fits(char kind, py::ssize_t size, const FrameColumn& allowed) {
    return size < 4 || (size == 4 && (kind == 'i' || allowed.most == workbench::kUint32Most));
}

/// The names and the columns of whatever holds frames.
std::vector<std::pair<std::string, py::object>> named_columns(const py::object& frames) {
    std::vector<std::pair<std::string, py::object>> columns;
    const bool is_array = py::isinstance<py::array>(frames);
    py::object names = py::none();
    if (is_array) names = frames.attr("dtype").attr("names");
    if (is_array && names.is_none()) {
        raise_input_error(
            "frames has no named columns; give a structured array, a DataFrame or a dict of arrays",
            "frames");
    }
    if (!is_array) {
        if (!py::hasattr(frames, "keys")) {
            raise_input_error(
                "frames is neither a structured array, a DataFrame nor a dict of arrays", "frames");
        }
        names = frames.attr("keys")();
    }
    for (const py::handle name : names) {
        columns.emplace_back(py::cast<std::string>(py::str(name)),
                             py::reinterpret_borrow<py::object>(frames[name]));
    }
    return columns;
}

[[noreturn]] void raise_unknown_column(const std::string& name) {
    std::vector<std::string> known;
    for (const FrameColumn& column : kFrameColumns) known.emplace_back(column.name);
    const std::string near = workbench::nearest_name(name, known);
    raise_input_error(
        fmt::format("unknown column '{}'{}; begin a name with x_ to have it skipped", name,
                    near.empty() ? std::string() : fmt::format(", did you mean '{}'?", near)),
        name);
}

}  // namespace

FrameColumns::FrameColumns(const py::object& frames) {
    for (const auto& [name, values] : named_columns(frames)) {
        const auto column = std::find_if(kFrameColumns.begin(), kFrameColumns.end(),
                                         [&](const FrameColumn& c) { return c.name == name; });
        if (column != kFrameColumns.end()) {
            add(values, static_cast<std::size_t>(column - kFrameColumns.begin()));
        } else if (name != "frame" && name.compare(0, 2, "x_") != 0) {
            raise_unknown_column(name);
        }
    }
    check_gains();
}

void FrameColumns::add(const py::object& values, std::size_t target) {
    const std::string name(kFrameColumns[target].name);
    const auto array = py::array::ensure(
        py::hasattr(values, "to_numpy") ? values.attr("to_numpy")()
                                        : py::module_::import("numpy").attr("asarray")(values));
    const char kind = array.dtype().kind();
    if (kind != 'i' && kind != 'u' && kind != 'b') {
        raise_input_error(fmt::format("column '{}' has dtype {}; whole numbers are needed, without "
                                      "missing values (astype('int64') converts)",
                                      name, py::cast<std::string>(py::str(array.dtype()))),
                          name);
    }
    if (array.ndim() != 1) {
        raise_input_error(
            fmt::format("column '{}' has {} dimensions, 1 is needed", name, array.ndim()), name);
    }
    const auto size = static_cast<std::size_t>(array.shape(0));
    if (sized_ && size != size_) {
        raise_input_error(
            fmt::format("column '{}' has {} values, the columns before it {}", name, size, size_),
            name);
    }
    sized_ = true;
    size_ = size;
    constexpr char kSwapped = std::endian::native == std::endian::little ? '>' : '<';
    const auto order = py::cast<std::string>(array.dtype().attr("byteorder"));
    const bool swapped = order[0] == kSwapped;
    const py::ssize_t width = array.dtype().itemsize();
    columns_.push_back({static_cast<const char*>(array.data()), array.strides(0),
                        swapped ? loader<true>(kind, width) : loader<false>(kind, width), target});
    if (!always_fits(kind, width, kFrameColumns[target])) check_range(columns_.back());
    kept_.push_back(array);
}

void FrameColumns::check_gains() {
    const auto find = [&](std::size_t target) {
        return std::find_if(columns_.begin(), columns_.end(),
                            [&](const Column& c) { return c.target == target; });
    };
    for (const std::size_t needed : {0U, 1U}) {
        if (find(needed) == columns_.end()) {
            const std::string name(kFrameColumns[needed].name);
            raise_input_error(fmt::format("column '{}' is missing", name), name);
        }
    }
    const auto present = [&](std::size_t first) {
        std::size_t count = 0;
        for (std::size_t i = first; i < first + 3; ++i)
            count += find(i) != columns_.end() ? 1U : 0U;
        if (count == 1 || count == 2) {
            raise_input_error(fmt::format("a gain needs its three columns '{}', '{}' and '{}'",
                                          kFrameColumns[first].name, kFrameColumns[first + 1].name,
                                          kFrameColumns[first + 2].name),
                              std::string(kFrameColumns[first].name));
        }
        return count == 3;
    };
    const bool full = present(kFullGain);
    const bool awb = present(kAwbGain);
    if (!full && !awb) {
        raise_input_error(
            "the gain is missing: columns 'awb_r', 'awb_g', 'awb_b' or 'full_r', "
            "'full_g', 'full_b'",
            "awb_r");
    }
    if (full && awb) return;
    for (std::size_t i = 0; i < 3; ++i) {  // one triple serves for both
        Column copy = *find((full ? kFullGain : kAwbGain) + i);
        copy.target = (full ? kAwbGain : kFullGain) + i;
        columns_.push_back(copy);
    }
}

void FrameColumns::check_range(const Column& column) const {
    const FrameColumn& allowed = kFrameColumns[column.target];
    std::array<FrameValues, kBlock> block;
    for (std::size_t first = 0; first < size_; first += kBlock) {
        const std::size_t count = std::min(kBlock, size_ - first);
        column.load(column.at(first), column.stride, count, block.data()->data());
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t value = block[i][0];
            if (value >= allowed.least && value <= allowed.most) continue;
            raise_input_error(
                fmt::format("column '{}', frame {}: {} is out of range; allowed are {}..{}",
                            allowed.name, first + i, value, allowed.least, allowed.most),
                std::string(allowed.name));
        }
    }
}

void FrameColumns::read(std::size_t first, std::size_t count, workbench::Frame* out) const {
    std::array<FrameValues, kBlock> block{};
    for (std::size_t end = first + count; first < end; first += kBlock) {
        const std::size_t rows = std::min(kBlock, end - first);
        for (const Column& column : columns_) {
            column.load(column.at(first), column.stride, rows, &block[0][column.target]);
        }
        for (std::size_t i = 0; i < rows; ++i) *out++ = workbench::to_frame(block[i]);
    }
}

}  // namespace imgtune::python
