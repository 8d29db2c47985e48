#include "workbench/files/chart_locator.h"

#include "workbench/capture/chart_grid.h"
#include "workbench/capture/patch_samples.h"

#ifdef IMGTUNE_HAS_OPENCV

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <opencv2/mcc.hpp>
#include <vector>

namespace imgtune::workbench {

namespace {

constexpr double kSearchedSide = 1500.0;  // pixels; patches of a few tens are enough
// From the patches to OpenCV's box, in sides of a patch; in its model they stand 1.1 apart.
constexpr float kMargin = 0.6f * static_cast<float>(ChartGrid::kPitch) / 1.1f - 0.5f;

cv::Mat as_bgr(const Thumbnail& shown) {
    cv::Mat image(static_cast<int>(shown.height), static_cast<int>(shown.width), CV_8UC3);
    std::copy(shown.rgb.begin(), shown.rgb.end(), image.data);
    cv::cvtColor(image, image, cv::COLOR_RGB2BGR);
    return image;
}

/// Outer corners of the patches in a box that has a margin round them.
std::vector<cv::Point2f> corners_within(const std::vector<cv::Point2f>& box) {
    constexpr auto kWide = static_cast<float>(ChartGrid::kWidth);
    constexpr auto kHigh = static_cast<float>(ChartGrid::kHeight);
    const std::vector<cv::Point2f> ends = {{-kMargin, -kMargin},
                                           {kWide + kMargin, -kMargin},
                                           {kWide + kMargin, kHigh + kMargin},
                                           {-kMargin, kHigh + kMargin}};
    const std::vector<cv::Point2f> outer = {{0, 0}, {kWide, 0}, {kWide, kHigh}, {0, kHigh}};
    std::vector<cv::Point2f> found;
    cv::perspectiveTransform(outer, found, cv::getPerspectiveTransform(ends, box));
    return found;
}

}  // namespace

bool can_find_charts() {
    return true;
}

std::optional<Quad> find_chart(const Picture& picture) {
    const Thumbnail shown = picture_thumbnail(picture, kSearchedSide);
    const cv::Ptr<cv::mcc::CCheckerDetector> detector = cv::mcc::CCheckerDetector::create();
    cv::mcc::CCheckerDetector& search = *detector;
    cv::setNumThreads(1);  // these two: the same answer every time
    cv::setRNGSeed(1);
    if (!search.process(as_bgr(shown), cv::mcc::MCC24, 1)) return std::nullopt;
    const std::vector<cv::Point2f> box = search.getBestColorChecker()->getBox();
    if (box.size() != 4) return std::nullopt;
    Quad corners;
    const std::vector<cv::Point2f> found = corners_within(box);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i] = {shown.left + shown.scale * static_cast<double>(found[i].x),
                      shown.top + shown.scale * static_cast<double>(found[i].y)};
    }
    return corners;
}

}  // namespace imgtune::workbench

#else

namespace imgtune::workbench {

bool can_find_charts() {
    return false;
}

std::optional<Quad> find_chart(const Picture&) {
    return std::nullopt;
}

}  // namespace imgtune::workbench

#endif
