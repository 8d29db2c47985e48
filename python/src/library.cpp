#include <fmt/format.h>
#include <imgtune/imgtune.h>

#include <cstring>
#include <utility>

#include "library_arrays.h"

// The exported functions of the library on arrays, for tests and teaching.

namespace imgtune::python {

namespace {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Param = ISP_SMOOTH_COLOR_PARAM_T;

const std::pair<const char*, std::uint32_t Param::*> kParamFields[] = {
    {"IsBoot", &Param::IsBoot},
    {"IsCapture", &Param::IsCapture},
    {"LSPEnable", &Param::LSPEnable},
    {"u4Ratio", &Param::u4Ratio},
    {"u4SatOffset", &Param::u4SatOffset},
    {"u4RealCT", &Param::u4RealCT},
    {"u4UpperCT", &Param::u4UpperCT},
    {"u4LowerCT", &Param::u4LowerCT},
    {"lum_speed", &Param::lum_speed},
    {"sat_speed", &Param::sat_speed},
    {"hue_speed", &Param::hue_speed},
    {"u4OutdoorBase", &Param::u4OutdoorBase},
    {"u4OutdoorRatio", &Param::u4OutdoorRatio},
    {"u4PcaWord15", &Param::u4PcaWord15},
};

Param param_of(const py::dict& values) {
    Param param{};
    for (const auto& [key, value] : values) {
        const auto name = py::cast<std::string>(key);
        bool known = false;
        for (const auto& [field, place] : kParamFields) {
            if (name != field) continue;
            param.*place = py::cast<std::uint32_t>(value);
            known = true;
        }
        if (!known) raise_input_error(fmt::format("the parameters have no field '{}'", name), name);
    }
    return param;
}

using Block = void (*)(Param&, const Image&, const Image&, Image&);

void bind_block(py::module_& module, const char* name, Block block) {
    module.def(
        name,
        [block](const py::dict& param, const Words& high, const Words& low, const Words& working) {
            Param values = param_of(param);
            auto image = record_of<Image>(working, "working");
            block(values, record_of<Image>(high, "high"), record_of<Image>(low, "low"), image);
            return array_of<std::uint32_t>(image);
        },
        py::arg("param"), py::arg("high"), py::arg("low"), py::arg("working"),
        "A block function. param: dict of the parameter record's fields (missing ones 0); high, "
        "low,\n"
        "working: (117,) uint32. Returns the image written, (117,) uint32.");
}

NSIspTuning::RAWIspCamInfo camera_of(const py::dict& values) {
    py::dict columns;
    for (const auto& [name, value] : values) columns[name] = py::make_tuple(value);
    const FrameColumns frames(columns);
    workbench::Frame frame;
    frames.read(0, 1, &frame);
    return frame.state;
}

py::tuple smooth_ccm(const Words& tuning, const py::dict& camera, const Words& ring,
                     std::uint32_t index, const Words& weights, int full_gain, int int_bits,
                     int frac_bits) {
    struct Ring {
        NSIspTuning::ISP_NVRAM_CCM_T entry[2];
    };
    struct Weights {
        unsigned int w[3];
    };
    auto image = record_of<ISP_NVRAM_MULTI_CCM_STRUCT>(tuning, "tuning");
    auto entries = record_of<Ring>(ring, "ring");
    auto w = record_of<Weights>(weights, "weights");
    NSIspTuning::ISP_NVRAM_CCM_T output{};
    unsigned short version = 0;
    unsigned int next = index;
    SmoothCCM(full_gain, int_bits, frac_bits, image, output, version, camera_of(camera),
              entries.entry, next, w.w);
    return py::make_tuple(array_of<std::uint32_t>(output),
                          array_of<std::uint32_t>(entries).attr("reshape")(2, 6), next);
}

py::tuple smooth_color(const Words& table, const Words& tuning, const py::dict& camera,
                       const Words& working, int boot, int capture, unsigned upper_kelvin,
                       unsigned lower_kelvin, int upper_index, int lower_index) {
    struct Table {
        Image image[4][5];
    };
    struct Tunings {
        ISP_NVRAM_PCA_PARAM_T slot[4];
    };
    const auto images = record_of<Table>(table, "table");
    const auto tunings = record_of<Tunings>(tuning, "tuning");
    auto image = record_of<Image>(working, "working");
    Image result{};
    unsigned short version = 0;
    SmoothCOLOR(capture, upper_kelvin, lower_kelvin,
                static_cast<NSIspTuning::EIndex_PCA_LUT_CT>(upper_index),
                static_cast<NSIspTuning::EIndex_PCA_LUT_CT>(lower_index), images.image,
                tunings.slot, camera_of(camera), result, version, boot, image);
    return py::make_tuple(array_of<std::uint32_t>(result), boot);
}

struct Matrix {
    float m[9];
};
struct Vector {
    float v[3];
};

template <class Record>
py::array_t<float> float_array(const Record& record) {
    py::array_t<float> out(sizeof(Record) == sizeof(Matrix) ? std::vector<py::ssize_t>{3, 3}
                                                            : std::vector<py::ssize_t>{3});
    std::memcpy(out.mutable_data(), &record, sizeof(record));
    return out;
}

void bind_products(py::module_& module) {
    module.def(
        "matmul3",
        [](const Floats& a, const Floats& b) {
            auto x = record_of<Matrix>(a, "a"), y = record_of<Matrix>(b, "b");
            Matrix out;
            matmul3(out.m, x.m, y.m);
            return float_array(out);
        },
        py::arg("a"), py::arg("b"), "B A for two (3, 3) float32 matrices.");
    module.def(
        "trans3",
        [](const Floats& a) {
            auto x = record_of<Matrix>(a, "a");
            trans3(x.m);
            return float_array(x);
        },
        py::arg("a"), "The transpose.");
    module.def(
        "aat3",
        [](const Floats& a) {
            auto x = record_of<Matrix>(a, "a");
            Matrix out;
            aat3(out.m, x.m);
            return float_array(out);
        },
        py::arg("a"), "A times its transpose.");
    module.def(
        "matvec3",
        [](const Floats& a, const Floats& v) {
            auto x = record_of<Matrix>(a, "a");
            auto y = record_of<Vector>(v, "v");
            Vector out;
            matvec3(out.v, x.m, y.v);
            return float_array(out);
        },
        py::arg("a"), py::arg("v"), "The transpose of A times v.");
    module.def(
        "cross",
        [](const Floats& a, const Floats& b) {
            auto x = record_of<Vector>(a, "a"), y = record_of<Vector>(b, "b");
            Vector out;
            cross(out.v, x.v, y.v);
            return float_array(out);
        },
        py::arg("a"), py::arg("b"), "The cross product.");
}

void bind_decomposition(py::module_& module) {
    const auto in_place = [&module](const char* name, void (*function)(float*), const char* doc) {
        module.def(
            name,
            [function](const Floats& v) {
                auto x = record_of<Vector>(v, "v");
                function(x.v);
                return float_array(x);
            },
            py::arg("v"), doc);
    };
    in_place("unit3", unit3, "The unit vector of v; NaN for a zero vector.");
    in_place("solvecubic", solvecubic, "Roots of x^3 + p[2] x^2 + p[1] x + p[0].");
    in_place("sort3", sort3, "Three values in descending order.");
    module.def(
        "find_eigenvector",
        [](const Floats& a) {
            auto x = record_of<Matrix>(a, "a");
            Vector out;
            find_eigenvector(x.m, out.v);
            return float_array(out);
        },
        py::arg("a"), "Unit vector that spans the null space of a (3, 3) matrix.");
    module.def(
        "pseudo_inverse",
        [](const Floats& p, const Floats& w, const Floats& q) {
            auto x = record_of<Matrix>(p, "p"), y = record_of<Matrix>(q, "q");
            auto values = record_of<Vector>(w, "w");
            Matrix out;
            pseudo_inverse(out.m, x.m, values.v, y.m);
            return float_array(out);
        },
        py::arg("p"), py::arg("w"), py::arg("q"),
        "The pseudo-inverse from eigenvectors and eigenvalues.");
    module.def("cbrt_stats", py::vectorize(cbrt_stats), py::arg("r"), "Cube root, elementwise.");
    module.def("round_stats", py::vectorize(round_stats), py::arg("x"),
               "Rounded to the nearest integer, halves away from zero, elementwise.");
}

void bind_rules(py::module_& module) {
    module.def("inter_param_by_ct", py::vectorize(InterParamByCT), py::arg("x"), py::arg("p"),
               py::arg("q"), py::arg("vp"), py::arg("vq"),
               "Interpolation by CT, elementwise; vq on a degenerate bracket.");
    module.def("inter_param_pca", py::vectorize(InterParam_PCA), py::arg("x"), py::arg("p"),
               py::arg("q"), py::arg("vp"), py::arg("vq"), "The same without the bracket's test.");
    module.def("is_cct_boundary", py::vectorize(IsCCTBoundary), py::arg("x"), py::arg("p"),
               py::arg("q"), "1 for a degenerate bracket, else 0, elementwise.");
    module.def("inter_param_by_lv", py::vectorize(InterParamByLV), py::arg("ratio"),
               py::arg("base"), py::arg("outdoor"), py::arg("normal"),
               "Blend by light value, elementwise; 0 for a zero base.");
    module.def("iir", py::vectorize(IIR), py::arg("previous"), py::arg("target"), py::arg("step"),
               "One temporal step, elementwise, uint32.");
    module.def("clip", py::vectorize(Clip), py::arg("v"), py::arg("a"), py::arg("b"),
               "v between two bounds in either order, elementwise, uint32.");
    using ClipBytes = unsigned char (*)(unsigned char, unsigned char, unsigned char);
    using ClipWords = unsigned int (*)(unsigned int, unsigned int, unsigned int);
    module.def("CLIP", py::vectorize(ClipWords{CLIP}), py::arg("v"), py::arg("lo"), py::arg("hi"),
               "v limited to lo..hi, the upper bound tested first, elementwise, uint32.");
    module.def("CLIP_uint8", py::vectorize(ClipBytes{CLIP}), py::arg("v"), py::arg("lo"),
               py::arg("hi"), "The same for uint8.");
    module.def("sign", py::vectorize(sign), py::arg("x"), "1 above 0, else -1, elementwise.");
    module.def("sign_extension", py::vectorize(sign_extension), py::arg("v"), py::arg("n"),
               "The low 32 - n bits as a signed number, elementwise.");
}

}  // namespace

void bind_library(py::module_& module) {
    py::module_ library = module.def_submodule("library", "The exported functions of the library.");
    bind_rules(library);
    bind_products(library);
    bind_decomposition(library);
    bind_ccm_functions(library);
    const std::pair<const char*, Block> blocks[] = {
        {"inter_param_by_lv_global", InterParamByLVGlobal},
        {"inter_param_global", InterParamGlobal},
        {"inter_param_by_lv_partial_y", InterParamByLVPartialY},
        {"inter_param_partial_y", InterParamPartialY},
        {"inter_param_by_lv_partial_h", InterParamByLVPartialH},
        {"inter_param_partial_h", InterParamPartialH},
        {"inter_param_by_lv_partial_s", InterParamByLVPartialS},
        {"inter_param_partial_s", InterParamPartialS},
        {"inter_param_by_lv_s_gain_by_y", InterParamByLVSGainByY},
        {"inter_param_s_gain_by_y", InterParamSGainByY},
        {"inter_param_by_lv_lsp", InterParamByLVLSP},
        {"inter_param_lsp", InterParamLSP},
        {"inter_param_3d_lut", InterParam3DLUT},
    };
    for (const auto& [name, block] : blocks) bind_block(library, name, block);
    library.def(
        "smooth_ccm", &smooth_ccm, py::arg("tuning"), py::arg("camera"), py::arg("ring"),
        py::arg("index"), py::arg("weights"), py::kw_only(), py::arg("full_gain") = 0,
        py::arg("int_bits") = 3, py::arg("frac_bits") = 9,
        "SmoothCCM once. tuning: (1102,) uint32; camera: dict with the columns of a frame;\n"
        "ring: (2, 6) uint32; weights: (3,) uint32. Returns (output (6,) uint32, ring, index).");
    library.def(
        "smooth_color", &smooth_color, py::arg("table"), py::arg("tuning"), py::arg("camera"),
        py::arg("working"), py::arg("boot"), py::kw_only(), py::arg("capture") = 0,
        py::arg("upper_kelvin"), py::arg("lower_kelvin"), py::arg("upper_index"),
        py::arg("lower_index"),
        "SmoothCOLOR once. table: (4, 5, 117) uint32; tuning: (4, 17) uint32; camera: dict\n"
        "with the columns of a frame; working: (117,) uint32. Returns (result (117,), boot).");
}

}  // namespace imgtune::python
