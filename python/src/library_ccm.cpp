#include <imgtune/imgtune.h>

#include "library_arrays.h"

// The exported functions that make a matrix of a gain.

namespace imgtune::python {

namespace {

using NSIspTuning::ISP_CCM_T;

struct Ratios {
    float value[2];
};
struct Terms {
    float value[6][9];
};

py::tuple gain_projection(const Words& gain, const Words& tuning, int method, int count, int row) {
    const auto at = record_of<AWB_GAIN_T>(gain, "gain");
    auto image = record_of<ISP_NVRAM_MULTI_CCM_STRUCT>(tuning, "tuning");
    AWB_GAIN_T projected{};
    Ratios ratios{};
    int position = 0;
    GainProjection(at, image, projected, method, ratios.value, count, row, &position);
    return py::make_tuple(array_of<std::int32_t>(projected), array_of<float>(ratios), position);
}

py::array interpolation(const Words& projected, const Words& tuning, const Words& table, bool flash,
                        const Floats& ratios, int method, int row, int position, int count,
                        int int_bits, int frac_bits) {
    auto gain = record_of<AWB_GAIN_T>(projected, "projected");
    auto image = record_of<ISP_NVRAM_MULTI_CCM_STRUCT>(tuning, "tuning");
    auto decoded = record_of<NSIspTuning::ISP_CCM_T_2D>(table, "table");
    auto shares = record_of<Ratios>(ratios, "ratios");
    ISP_CCM_T output{};
    Interpolation(gain, int_bits, frac_bits, image, decoded, flash ? 1 : 0, output, shares.value,
                  method, row, position, count);
    return array_of<std::int32_t>(output);
}

py::array gen_ccm(const Words& gain, const Floats& mean, const Floats& deviation,
                  const Floats& terms, int unity) {
    const auto at = record_of<AWB_GAIN_T>(gain, "gain");
    const auto means = record_of<Ratios>(mean, "mean");
    const auto deviations = record_of<Ratios>(deviation, "deviation");
    auto p = record_of<Terms>(terms, "terms");
    ISP_CCM_T output{};
    GenCCM(at, 0, 0, unity, means.value[0], means.value[1], deviations.value[0],
           deviations.value[1], p.value[0], p.value[1], p.value[2], p.value[3], p.value[4],
           p.value[5], output);
    return array_of<std::int32_t>(output);
}

py::array blend_ccm(const Floats& ratios, const Words& table, int position, int row, int count) {
    auto shares = record_of<Ratios>(ratios, "ratios");
    auto decoded = record_of<NSIspTuning::ISP_CCM_T_2D>(table, "table");
    ISP_CCM_T output{};
    BlendCCM(shares.value, decoded, output, position, row, count);
    return array_of<std::int32_t>(output);
}

py::array seperate_rwb_ccm_by_ratio(const Words& image, float ratio, int int_bits, int frac_bits) {
    auto words = record_of<NSIspTuning::ISP_NVRAM_CCM_T>(image, "image");
    seperate_RWB_CCM_by_ratio(&words, ratio, int_bits, frac_bits);
    return array_of<std::uint32_t>(words);
}

}  // namespace

void bind_ccm_functions(py::module_& library) {
    library.def("gain_projection", &gain_projection, py::arg("gain"), py::arg("tuning"),
                py::arg("method"), py::arg("count"), py::arg("row"),
                "A gain's place on the locus of a row. gain: (3,) int; tuning: (1102,) uint32.\n"
                "Returns (projected (3,) int32, ratios (2,) float32, position); what the method\n"
                "does not write is 0.");
    library.def(
        "interpolation", &interpolation, py::arg("projected"), py::arg("tuning"), py::arg("table"),
        py::arg("flash"), py::arg("ratios"), py::arg("method"), py::arg("row"), py::arg("position"),
        py::arg("count"), py::kw_only(), py::arg("int_bits") = 3, py::arg("frac_bits") = 9,
        "A matrix by method. projected: (3,) int; tuning: (1102,) uint32; table: (9, 8, 8)\n"
        "int, coefficient by row and CT index; ratios: (2,) float32. Returns (9,) int32.");
    library.def(
        "gen_ccm", &gen_ccm, py::arg("gain"), py::arg("mean"), py::arg("deviation"),
        py::arg("terms"), py::arg("unity") = 512,
        "A matrix from polynomials. gain: (3,) int; mean, deviation: (2,) float32, red and\n"
        "blue; terms: (6, 9) float32, P00, P10, P01, P20, P11, P02. Returns (9,) int32.");
    library.def("blend_ccm", &blend_ccm, py::arg("ratios"), py::arg("table"), py::arg("position"),
                py::arg("row"), py::arg("count"),
                "A blend of decoded matrices. ratios: (2,) float32; table: (9, 8, 8) int. Returns\n"
                "(9,) int32.");
    library.def(
        "seperate_rwb_ccm_by_ratio", &seperate_rwb_ccm_by_ratio, py::arg("image"), py::arg("ratio"),
        py::arg("int_bits") = 3, py::arg("frac_bits") = 9,
        "A register image with its off-diagonals rescaled. image: (6,) uint32. Returns the\n"
        "same.");
}

}  // namespace imgtune::python
