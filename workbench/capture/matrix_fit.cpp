#include "workbench/capture/matrix_fit.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/NumericalDiff>

#include "workbench/appearance/color_difference.h"

namespace imgtune::workbench {

namespace {

constexpr Eigen::Index kFreeCoefficients = 6;
constexpr Eigen::Index kParameters = kFreeCoefficients + 1;  // and the logarithm of the exposure
constexpr std::size_t kColumnOf[3][2] = {
    {1, 2}, {0, 2}, {0, 1}};  // of the off-diagonals, a row each

RealMatrix closed_matrix(const Eigen::VectorXd& off_diagonals) {
    RealMatrix matrix{};
    for (std::size_t row = 0; row < 3; ++row) {
        const double a = off_diagonals[static_cast<Eigen::Index>(2 * row)];
        const double b = off_diagonals[static_cast<Eigen::Index>(2 * row + 1)];
        matrix[3 * row + kColumnOf[row][0]] = a;
        matrix[3 * row + kColumnOf[row][1]] = b;
        matrix[3 * row + row] = 1.0 - a - b;
    }
    return matrix;
}

Rgb through(const RealMatrix& matrix, const Rgb& color, double factor) {
    Rgb out{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t k = 0; k < 3; ++k) out[row] += matrix[3 * row + k] * color[k] * factor;
    }
    return out;
}

/// Weighted colour differences of the chart, over what can be chosen.
struct VisibleError {
    using Scalar = double;
    using InputType = Eigen::VectorXd;
    using ValueType = Eigen::VectorXd;
    using JacobianType = Eigen::MatrixXd;
    enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

    const PatchColors& balanced;
    const std::array<Lab, kChartPatches>& wanted;
    const PatchWeights& weights;

    int inputs() const { return kParameters; }
    int values() const { return kChartPatches; }
    int operator()(const InputType& at, ValueType& errors) const {
        const RealMatrix matrix = closed_matrix(at.head(kFreeCoefficients));
        const double exposure = std::exp(at[kFreeCoefficients]);
        for (std::size_t i = 0; i < kChartPatches; ++i) {
            errors[static_cast<Eigen::Index>(i)] =
                weights[i] == 0.0
                    ? 0.0
                    : std::sqrt(weights[i]) *
                          ciede2000(wanted[i], to_lab(through(matrix, balanced[i], exposure)));
        }
        return 0;
    }
};

void complete(MatrixFit& fit, const PatchColors& balanced, const PatchColors& reference,
              const PatchWeights& weights) {
    double sum = 0.0;
    double count = 0.0;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        fit.fitted[i] = through(fit.matrix, balanced[i], fit.exposure);
        fit.residual[i] = ciede2000(to_lab(reference[i]), to_lab(fit.fitted[i]));
        if (weights[i] == 0.0) continue;
        sum += fit.residual[i];
        count += 1.0;
    }
    fit.mean = count > 0.0 ? sum / count : 0.0;
}

}  // namespace

WhiteBalance white_balance(const PatchColors& camera, const PatchColors& reference,
                           const PatchWeights& weights) {
    Rgb seen{};
    Rgb wanted{};
    for (std::size_t i = kFirstGrey; i < kBlackPatch; ++i) {
        if (weights[i] == 0.0) continue;
        for (std::size_t k = 0; k < 3; ++k) {
            seen[k] += camera[i][k];
            wanted[k] += reference[i][k];
        }
    }
    return {seen[1] / seen[0] * wanted[0] / wanted[1], seen[1] / seen[2] * wanted[2] / wanted[1]};
}

MatrixFit fit_linear(const PatchColors& balanced, const PatchColors& reference,
                     const PatchWeights& weights) {
    double seen = 0.0;
    double wanted = 0.0;
    for (std::size_t i = kFirstGrey; i < kBlackPatch; ++i) {
        if (weights[i] == 0.0) continue;
        seen += balanced[i][1];
        wanted += reference[i][1];
    }
    MatrixFit fit;
    fit.exposure = wanted / seen;
    Eigen::VectorXd off_diagonals(kFreeCoefficients);
    // Rows that sum to 1: of the differences to the row's own colour, how much is added.
    for (std::size_t row = 0; row < 3; ++row) {
        Eigen::Matrix<double, kChartPatches, 2> differences;
        Eigen::Matrix<double, kChartPatches, 1> missing;
        for (std::size_t i = 0; i < kChartPatches; ++i) {
            const double weight = std::sqrt(weights[i]);
            const auto at = static_cast<Eigen::Index>(i);
            const double own = balanced[i][row] * fit.exposure;
            for (std::size_t k = 0; k < 2; ++k) {
                differences(at, static_cast<Eigen::Index>(k)) =
                    weight * (balanced[i][kColumnOf[row][k]] * fit.exposure - own);
            }
            missing[at] = weight * (reference[i][row] - own);
        }
        off_diagonals.segment<2>(static_cast<Eigen::Index>(2 * row)) =
            differences.colPivHouseholderQr().solve(missing);
    }
    fit.matrix = closed_matrix(off_diagonals);
    complete(fit, balanced, reference, weights);
    return fit;
}

MatrixFit fit_visible(const MatrixFit& start, const PatchColors& balanced,
                      const PatchColors& reference, const PatchWeights& weights) {
    std::array<Lab, kChartPatches> wanted{};
    for (std::size_t i = 0; i < kChartPatches; ++i) wanted[i] = to_lab(reference[i]);
    Eigen::VectorXd at(kParameters);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t k = 0; k < 2; ++k) {
            at[static_cast<Eigen::Index>(2 * row + k)] = start.matrix[3 * row + kColumnOf[row][k]];
        }
    }
    at[kFreeCoefficients] = std::log(start.exposure);

    const VisibleError error{balanced, wanted, weights};
    Eigen::NumericalDiff<VisibleError, Eigen::Central> differentiated(error);
    Eigen::LevenbergMarquardt<decltype(differentiated)> solver(differentiated);
    solver.parameters.xtol = 1e-10;
    solver.parameters.ftol = 1e-12;
    solver.parameters.maxfev = 2000;
    Eigen::VectorXd before(kChartPatches);
    error(at, before);
    Eigen::VectorXd found = at;
    solver.minimize(found);
    Eigen::VectorXd after(kChartPatches);
    error(found, after);
    if (!found.allFinite() || !(after.squaredNorm() <= before.squaredNorm())) return start;

    MatrixFit fit;
    fit.matrix = closed_matrix(found.head(kFreeCoefficients));
    fit.exposure = std::exp(found[kFreeCoefficients]);
    complete(fit, balanced, reference, weights);
    return fit;
}

bool has_dominant_diagonal(const RealMatrix& matrix) {
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (k == row) continue;
            if (!(matrix[3 * row + row] > std::abs(matrix[3 * row + k]))) return false;
        }
    }
    return true;
}

}  // namespace imgtune::workbench
