#include "workbench/calibration/report_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "workbench/appearance/color_difference.h"
#include "workbench/appearance/patches.h"
#include "workbench/camera/mired.h"
#include "workbench/text/shown_text.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kPageHead = R"html(<!doctype html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>{0}</title>
<style>
body {{ font: 15px/1.45 system-ui, sans-serif; color: #1b1b1b; background: #fff; margin: 0 auto;
  max-width: 72rem; padding: 1rem; }}
h1 {{ font-size: 1.4rem; margin: 0 0 .2rem; overflow-wrap: anywhere; }}
h2 {{ font-size: 1.05rem; margin: 1.8rem 0 .4rem; }}
p {{ margin: .3rem 0; max-width: 48rem; }}
.wide {{ overflow-x: auto; }}
table {{ border-collapse: collapse; font-variant-numeric: tabular-nums; }}
th, td {{ text-align: right; padding: .18rem .6rem; border-bottom: 1px solid #ddd; white-space: nowrap; }}
th {{ font-weight: 600; vertical-align: bottom; }}
.t {{ text-align: left; }}
.best td {{ background: #e8f1e4; font-weight: 600; }}
.plots, .charts {{ display: grid; gap: 1rem; grid-template-columns: repeat(auto-fit, minmax(min(100%, 26rem), 1fr)); }}
figure {{ margin: 0; }}
figcaption {{ font-size: .9rem; margin-bottom: .2rem; }}
svg {{ width: 100%; height: auto; display: block; }}
svg text {{ font: 12px system-ui, sans-serif; fill: #444; }}
</style>
<h1>{0}</h1>
)html";

// Two that people who do not tell red from green tell apart, too.
constexpr const char* kChosenColor = "#0b5fa5";
constexpr const char* kOtherColor = "#c2610c";

std::string html_text(const std::string& text) {
    std::string out;
    for (const char c : shown_text(text)) {
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (c == '"') {
            out += "&quot;";
        } else {
            out += c;
        }
    }
    return out;
}

std::string color_of(const std::array<std::uint8_t, 3>& rgb) {
    return fmt::format("#{:02x}{:02x}{:02x}", rgb[0], rgb[1], rgb[2]);
}

const char* patch_title(std::size_t patch) {
    return chart_patches()[patch].name;
}

// ---- plots

/// A plot with linear axes; x may run either way.
class Plot {
  public:
    static constexpr double kWide = 520.0;
    static constexpr double kHigh = 300.0;

    Plot(double left, double right, double bottom, double top)
        : left_(left), right_(right), bottom_(bottom), top_(top) {}

    double x(double value) const {
        return kMarginLeft + (value - left_) / (right_ - left_) * (kWide - kMarginLeft - 14.0);
    }
    double y(double value) const {
        return kHigh - kMarginBelow -
               (value - bottom_) / (top_ - bottom_) * (kHigh - kMarginBelow - 14.0);
    }

    void x_mark(double value, const std::string& label) {
        axes_ += fmt::format("<text x='{:.1f}' y='{}' text-anchor='middle'>{}</text>", x(value),
                             kHigh - kMarginBelow + 17.0, label);
        axes_ += fmt::format("<path d='M{0:.1f} {1}V{2}' stroke='#ddd'/>", x(value), 14.0,
                             kHigh - kMarginBelow);
    }
    void y_mark(double value, const std::string& label) {
        axes_ += fmt::format("<text x='{}' y='{:.1f}' text-anchor='end'>{}</text>",
                             kMarginLeft - 6.0, y(value) + 4.0, label);
        axes_ += fmt::format("<path d='M{} {:.1f}H{}' stroke='#ddd'/>", kMarginLeft, y(value),
                             kWide - 14.0);
    }
    void y_marks() {
        const double step = tick_step(top_ - bottom_);
        for (long mark = first_mark(bottom_, step); mark <= last_mark(top_, step); ++mark) {
            const double value = static_cast<double>(mark) * step;
            y_mark(value, fmt::format("{:g}", value));
        }
    }
    void x_marks() {
        const double low = std::min(left_, right_);
        const double high = std::max(left_, right_);
        const double step = tick_step(high - low);
        for (long mark = first_mark(low, step); mark <= last_mark(high, step); ++mark) {
            const double value = static_cast<double>(mark) * step;
            x_mark(value, fmt::format("{:g}", value));
        }
    }
    void line(const std::vector<std::array<double, 2>>& points, const char* color,
              const char* dashes) {
        std::string path;
        for (const auto& point : points) {
            path +=
                fmt::format("{}{:.1f} {:.1f}", path.empty() ? 'M' : 'L', x(point[0]), y(point[1]));
        }
        body_ += fmt::format(
            "<path d='{}' fill='none' stroke='{}' stroke-width='2' stroke-dasharray='{}'/>", path,
            color, dashes);
    }
    void dot(double at_x, double at_y, const char* color, bool filled, const std::string& title) {
        body_ += fmt::format(
            "<circle cx='{:.1f}' cy='{:.1f}' r='5' stroke='{}' stroke-width='2' fill='{}'>"
            "<title>{}</title></circle>",
            x(at_x), y(at_y), color, filled ? color : "#fff", title);
    }
    std::string svg(const char* x_title, const char* label) const {
        return fmt::format(
            "<svg viewBox='0 0 {} {}' role='img' aria-label='{}'>{}{}"
            "<text x='{}' y='{}' text-anchor='middle'>{}</text></svg>\n",
            kWide, kHigh, label, axes_, body_, (kMarginLeft + kWide) / 2, kHigh - 4.0, x_title);
    }

  private:
    static constexpr double kMarginLeft = 46.0;
    static constexpr double kMarginBelow = 40.0;

    static long first_mark(double low, double step) { return std::lround(std::ceil(low / step)); }
    static long last_mark(double high, double step) {
        return std::lround(std::floor((high + 1e-9) / step));
    }

    /// 1, 2 or 5 times a power of ten: some five steps. 1 for a span of nothing.
    static double tick_step(double span) {
        if (!(span > 0.0)) return 1.0;
        const double rough = span / 5.0;
        const double power = std::pow(10.0, std::floor(std::log10(rough)));
        for (const double factor : {1.0, 2.0, 5.0}) {
            if (factor * power >= rough) return factor * power;
        }
        return 10.0 * power;
    }

    double left_;
    double right_;
    double bottom_;
    double top_;
    std::string axes_;
    std::string body_;
};

std::string legend(const char* color, const char* dashes, const char* text) {
    return fmt::format(
        "<span style='white-space:nowrap'><svg viewBox='0 0 34 10' style='display:inline-block;"
        "width:34px'><path d='M0 5H34' stroke='{}' stroke-width='2' stroke-dasharray='{}'/></svg> "
        "{}</span> &ensp; ",
        color, dashes, text);
}

/// Error along the locus, x in mired with kelvin as marks: equal steps look about equally large.
std::string error_plot(const CalibrationReport& report) {
    double top = 1.0;
    for (const LocusError& at : report.along) {
        top = std::max({top, at.chosen.worst, at.point_by_point.worst});
    }
    Plot plot(to_mired(report.along.front().kelvin), to_mired(report.along.back().kelvin), 0.0,
              top * 1.05);
    plot.y_marks();
    double marked = INFINITY;
    for (const ReportedLight& light : report.lights) {
        const double x = plot.x(to_mired(light.kelvin));
        if (std::abs(x - marked) < 44.0) continue;
        plot.x_mark(to_mired(light.kelvin), fmt::format("{:g}", light.kelvin));
        marked = x;
    }
    const auto draw = [&](ChartDifference LocusError::*which, double ChartDifference::*figure,
                          const char* color, const char* dashes) {
        std::vector<std::array<double, 2>> points;
        for (const LocusError& at : report.along) {
            points.push_back({to_mired(at.kelvin), at.*which.*figure});
        }
        plot.line(points, color, dashes);
    };
    draw(&LocusError::point_by_point, &ChartDifference::mean, kOtherColor, "none");
    draw(&LocusError::point_by_point, &ChartDifference::worst, kOtherColor, "3 4");
    draw(&LocusError::chosen, &ChartDifference::mean, kChosenColor, "none");
    draw(&LocusError::chosen, &ChartDifference::worst, kChosenColor, "3 4");
    return "<figure><figcaption>CIEDE2000 along the locus: " +
           legend(kChosenColor, "none", "mean, chosen") +
           legend(kChosenColor, "3 4", "worst patch") +
           legend(kOtherColor, "none", "mean, point by point") +
           legend(kOtherColor, "3 4", "worst patch") + "</figcaption>\n" +
           plot.svg("kelvin, even in mired", "Colour error along the locus") + "</figure>\n";
}

std::string locus_plot(const CalibrationReport& report) {
    double red_low = INFINITY, red_high = 0.0, blue_low = INFINITY, blue_high = 0.0;
    std::vector<std::array<double, 2>> locus;
    for (const LocusError& at : report.along) {
        const double red = at.gain.i4R / 512.0;
        const double blue = at.gain.i4B / 512.0;
        red_low = std::min(red_low, red);
        red_high = std::max(red_high, red);
        blue_low = std::min(blue_low, blue);
        blue_high = std::max(blue_high, blue);
        locus.push_back({red, blue});
    }
    const double red_room = 0.06 * (red_high - red_low);
    const double blue_room = 0.06 * (blue_high - blue_low);
    Plot plot(red_low - red_room, red_high + red_room, blue_low - blue_room, blue_high + blue_room);
    plot.x_marks();
    plot.y_marks();
    plot.line(locus, "#777", "none");
    for (const ReportedLight& light : report.lights) {
        plot.dot(light.gain.i4R / 512.0, light.gain.i4B / 512.0, kChosenColor, light.tuned,
                 fmt::format("{:g} K", light.kelvin));
    }
    return "<figure><figcaption>Grey locus: blue gain over red gain; filled points are "
           "tuned</figcaption>\n" +
           plot.svg("red gain", "Grey locus of the sensor") + "</figure>\n";
}

// ---- patches and captures

/// The patches in one light: outside as calibrated, inside as the tuning shows them.
std::string patch_chart(const ReportedLight& light) {
    const ChartError error = chart_error(light.calibrated, light.made);
    std::string svg;
    for (std::size_t i = 0; i < error.patches.size(); ++i) {
        const double x = 4.0 + 86.0 * static_cast<double>(i % 6);
        const std::size_t row = i / 6;
        const double y = 4.0 + 72.0 * static_cast<double>(row);
        const bool dark = error.patches[i].reference.lightness < 55.0;
        svg += fmt::format(
            "<g><title>{}: CIEDE2000 {:.2f}</title>"
            "<rect x='{}' y='{}' width='82' height='68' fill='{}'/>"
            "<rect x='{}' y='{}' width='42' height='34' fill='{}'/>"
            "<text x='{}' y='{}' style='fill:{}'>{:.1f}</text></g>",
            patch_title(i), error.patches[i].difference, x, y, color_of(chart_patches()[i].srgb),
            x + 20.0, y + 17.0, color_of(encoded(error.patches[i].actual_rgb)), x + 4.0, y + 13.0,
            dark ? "#fff" : "#000", error.patches[i].difference);
    }
    return fmt::format(
        "<figure><figcaption>{:g} K{}: mean {:.2f}, worst {:.2f} ({})</figcaption>\n"
        "<svg viewBox='0 0 520 292' role='img' aria-label='Patches at {:g} K'>{}</svg></figure>\n",
        light.kelvin, light.tuned ? ", tuned" : "", error.mean, error.largest,
        patch_title(error.largest_patch), light.kelvin, svg);
}

std::string in_base64(const std::vector<std::uint8_t>& bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t three = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            three = three << 8U | (i + k < bytes.size() ? bytes[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            out += i + k > bytes.size() ? '=' : kDigits[three >> (18U - 6U * k) & 63U];
        }
    }
    return out;
}

/// A Windows bitmap, 24 bits, from the top: what every browser shows without a library.
std::vector<std::uint8_t> bitmap(const ReportedCapture& capture) {
    const std::size_t stride = (3 * capture.width + 3) / 4 * 4;
    std::vector<std::uint8_t> file(54 + stride * capture.height);
    const auto put = [&file](std::size_t at, std::uint32_t value) {
        for (std::size_t k = 0; k < 4; ++k) {
            file[at + k] = static_cast<std::uint8_t>(value >> (8U * k));
        }
    };
    file[0] = 'B';
    file[1] = 'M';
    put(2, static_cast<std::uint32_t>(file.size()));
    put(10, 54);
    put(14, 40);
    put(18, static_cast<std::uint32_t>(capture.width));
    put(22, 0U - static_cast<std::uint32_t>(capture.height));
    put(26, 1U | 24U << 16U);
    for (std::size_t y = 0; y < capture.height; ++y) {
        for (std::size_t x = 0; x < capture.width; ++x) {
            for (std::size_t k = 0; k < 3; ++k) {
                file[54 + y * stride + 3 * x + k] =
                    capture.rgb[3 * (y * capture.width + x) + 2 - k];
            }
        }
    }
    return file;
}

std::string capture_figure(const ReportedCapture& capture) {
    std::string text = fmt::format("<figure><figcaption>{}, {:g} K</figcaption>\n",
                                   html_text(capture.file), capture.kelvin);
    if (capture.rgb.empty()) return text + "<p>a table of means, no picture</p></figure>\n";
    std::string outlines;
    for (const auto& outline : capture.outlines) {
        std::string points;
        for (const auto& corner : outline) {
            points += fmt::format("{:.1f},{:.1f} ", corner[0] + 0.5, corner[1] + 0.5);
        }
        outlines += fmt::format("<polygon points='{}'/>", points);
    }
    return text + fmt::format(
                      "<svg viewBox='0 0 {} {}' role='img' aria-label='The chart as it was found'>"
                      "<image width='{}' height='{}' href='data:image/bmp;base64,{}'/>"
                      "<g fill='none' stroke='#000' stroke-width='{}'>{}</g>"
                      "<g fill='none' stroke='#fff' stroke-width='{}'>{}</g></svg></figure>\n",
                      capture.width, capture.height, capture.width, capture.height,
                      in_base64(bitmap(capture)), static_cast<double>(capture.width) / 130.0,
                      outlines, static_cast<double>(capture.width) / 300.0, outlines);
}

// ---- tables

std::string candidate_table(const Import& import) {
    std::string rows;
    for (std::size_t i = 0; i < import.candidates.size(); ++i) {
        const Candidate& candidate = import.candidates[i];
        std::string kelvins;
        for (const double kelvin : candidate.kelvins) {
            kelvins += fmt::format("{}{:g}", kelvins.empty() ? "" : ", ", kelvin);
        }
        rows += fmt::format(
            "<tr{}><td class=t>{}<td>{}<td>{:.2f}<td>{:.2f}<td class=t>{} at {}<td class=t>{}\n",
            i == import.chosen ? " class=best" : "", candidate_name(candidate),
            candidate.kelvins.size(), candidate.error.mean, candidate.error.worst,
            patch_title(candidate.error.worst_patch),
            light_name(candidate.error.worst_kelvin, candidate.error.worst_beside), kelvins);
    }
    return "<div class=wide><table><tr><th class=t>tuning<th>CTs<th>mean<th>worst<th class=t>patch "
           "and light<th class=t>tuned CTs in kelvin\n" +
           rows + "</table></div>\n";
}

std::string light_table(const CalibrationReport& report) {
    std::string rows;
    for (const ReportedLight& light : report.lights) {
        rows += fmt::format(
            "<tr{}><td>{:g}<td>{:.3f}<td>{:.3f}<td>{:.2f}<td>{:.2f}<td class=t>{}<td>{}<td>{}\n",
            light.tuned ? " class=best" : "", light.kelvin, light.gain.i4R / 512.0,
            light.gain.i4B / 512.0, light.error.mean, light.error.worst,
            patch_title(light.error.worst_patch),
            light.left_out ? fmt::format("{:.2f}", light.left_out->mean) : "not measured",
            light.left_out
                ? fmt::format("{:.2f}{}", light.left_out->worst, light.at_end ? ", clipped" : "")
                : "");
    }
    return "<div class=wide><table><tr><th>kelvin<th>red gain<th>blue gain<th>mean<th>worst<th "
           "class=t>patch<th>left out:<br>mean<th>worst\n" +
           rows + "</table></div>\n";
}

std::string capture_table(const CalibrationReport& report) {
    std::string rows;
    for (const ReportedCapture& capture : report.captures) {
        rows += fmt::format(
            "<tr><td class=t>{}<td>{:g}<td>{:.2f}<td>{:.2f}<td class=t>{}<td>{}<td>{}<td>{:.3f}"
            "<td>{:.2f} %<td>{:.1f} %\n",
            html_text(capture.file), capture.kelvin, capture.residual.mean, capture.residual.worst,
            patch_title(capture.residual.worst_patch), capture.clipped,
            capture.noise ? fmt::format("{:.2f} %", 100.0 * *capture.noise) : "not measured",
            capture.grey_slope, 100.0 * capture.glare, 100.0 * capture.unevenness);
    }
    return "<div class=wide><table><tr><th class=t>file<th>kelvin<th>mean<th>worst<th class=t>"
           "patch<th>clipped<th>noise<th>grey slope<th>glare<th>unevenness\n" +
           rows + "</table></div>\n";
}

}  // namespace

std::string candidate_name(const Candidate& candidate) {
    return fmt::format("{}, {}", candidate.method == CcmMethod::blend ? "blend" : "polynomial",
                       candidate.fit == CcmFit::points ? "as calibrated" : "fitted");
}

std::string light_name(double kelvin, double beside) {
    if (beside == 0.0) return fmt::format("{:.0f} K", kelvin);
    return fmt::format("{:.0f} K, gains {:.1f} % {}", kelvin, 100.0 * std::abs(beside),
                       beside > 0.0 ? "high" : "low");
}

std::vector<std::string> advice_of(const Import& import, const CalibrationReport& report) {
    std::vector<std::string> advice;
    const LightsError& all = import.candidates[import.chosen].error;
    for (const FewLights& few : report.few) {
        std::string kelvins;
        for (const double kelvin : few.kelvins) {
            kelvins += fmt::format("{}{:g}", kelvins.empty() ? "" : ", ", kelvin);
        }
        const bool suffices = few.error.mean <= 1.25 * all.mean + 0.05;
        advice.push_back(
            fmt::format("Of {} lights, the best {} for the {}, {} K, give a mean of {:.2f} and a "
                        "worst patch of "
                        "{:.2f}; all of them, {:.2f} and {:.2f}: {}.",
                        report.lights.size(), few.kelvins.size() == 2 ? "two" : "three",
                        few.method == CcmMethod::blend ? "blend" : "polynomial", kelvins,
                        few.error.mean, few.error.worst, all.mean, all.worst,
                        suffices ? "these few suffice" : "the others are worth their photographs"));
    }
    const ReportedLight* needed = nullptr;
    for (const ReportedLight& light : report.lights) {
        if (!light.left_out) continue;
        if (needed == nullptr || light.left_out->mean > needed->left_out->mean) needed = &light;
    }
    if (needed != nullptr) {
        advice.push_back(
            fmt::format("The light that the others tell least of is {:g} K: made without it, a "
                        "tuning has a mean "
                        "of {:.2f} there.",
                        needed->kelvin, needed->left_out->mean));
    }
    return advice;
}

std::string report_page(const std::string& title, const Import& import,
                        const CalibrationReport& report) {
    const Candidate& chosen = import.candidates[import.chosen];
    std::string page = fmt::format(kPageHead, html_text(title));
    page += fmt::format(
        "<p>Chosen: <b>{}</b> with {} tuned CTs. Along the whole locus and up to 3.6 % beside it "
        "its matrix differs from the calibrated one by a mean CIEDE2000 of <b>{:.2f}</b>, at worst "
        "by {:.2f} ({}, {}). About 1 is just visible side by side.</p>\n",
        candidate_name(chosen), chosen.kelvins.size(), chosen.error.mean, chosen.error.worst,
        patch_title(chosen.error.worst_patch),
        light_name(chosen.error.worst_kelvin, chosen.error.worst_beside));
    for (const std::string& sentence : advice_of(import, report)) {
        page += "<p>" + sentence + "</p>\n";
    }
    page += "<h2>Along the locus</h2>\n<div class=plots>\n" + error_plot(report) +
            locus_plot(report) + "</div>\n";
    page += "<h2>What was tried</h2>\n" + candidate_table(import);
    page +=
        "<h2>Light by light</h2>\n<p>Tuned lights are marked. Left out: the error in that light "
        "of a tuning made without it; beyond the ends the library clips the gains.</p>\n" +
        light_table(report);
    if (!report.captures.empty()) {
        page += "<h2>Captures</h2>\n" + capture_table(report) + "<div class=charts>\n";
        for (const ReportedCapture& capture : report.captures) page += capture_figure(capture);
        page += "</div>\n";
    }
    page +=
        "<h2>Patches</h2>\n<p>Outside the chart's own colours, which the calibrated matrix "
        "gives; inside what the tuning shows.</p>\n<div class=charts>\n";
    for (const ReportedLight& light : report.lights) page += patch_chart(light);
    return page + "</div>\n</html>\n";
}

}  // namespace imgtune::workbench
