#include "workbench/files/picture_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "workbench/files/picture_decoders.h"
#include "workbench/files/text_file.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

std::string lower_ending(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    std::string ending = dot == name.npos ? "" : name.substr(dot);
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

void take_order(Picture& picture, const PictureChoices& choices) {
    static constexpr std::array<std::pair<const char*, std::array<std::uint8_t, 4>>, 4> kOrders = {{
        {"RGGB", {0, 1, 1, 2}},
        {"BGGR", {2, 1, 1, 0}},
        {"GRBG", {1, 0, 2, 1}},
        {"GBRG", {1, 2, 0, 1}},
    }};
    for (const auto& [name, order] : kOrders) {
        if (choices.order == name) picture.order = order;
    }
}

}  // namespace

void refuse_picture(const std::string& name, const std::string& reason, const std::string& advice) {
    throw BadInput(fmt::format("{}: {}; {}", name, reason, advice));
}

void require_picture_size(const std::string& name, std::size_t width, std::size_t height,
                          std::size_t channels) {
    if (width == 0 || height == 0) {
        refuse_picture(name, "the picture has no pixels", "take it again, or export it again");
    }
    if (height > kMostPictureSamples / width / channels) {
        refuse_picture(name, fmt::format("a picture of {} x {} pixels", width, height),
                       fmt::format("at most {} million samples are read; crop it",
                                   kMostPictureSamples / 1000000));
    }
}

Picture decode_picture(const std::string& bytes, const std::string& name,
                       const PictureChoices& choices) {
    if (bytes.empty()) refuse_picture(name, "the file is empty", "copy it again");
    if (bytes.size() > kLargestPictureFile) {
        refuse_picture(name, "the file is larger than 1 GiB", "crop the picture");
    }
    const std::string ending = lower_ending(name);
    Picture picture;
    if (bytes.starts_with("\x89PNG")) {
        picture = decode_png(bytes, name);
    } else if (ending == ".tif" || ending == ".tiff") {
        picture = decode_tiff(bytes, name);
    } else {
        picture = decode_raw(bytes, name);
    }
    picture.file = name;
    const bool is_raw = !bytes.starts_with("\x89PNG") && ending != ".tif" && ending != ".tiff";
    if (picture.is_mosaic() && !is_raw) {
        if (choices.order.empty()) {
            refuse_picture(name, "one sample a pixel, and nothing says in which order of colours",
                           "name it with --order: RGGB, BGGR, GRBG or GBRG");
        }
        take_order(picture, choices);
    }
    if (choices.black) picture.black = {1, 1, {*choices.black}};
    if (choices.white) picture.white = choices.white;
    const double least_black =
        *std::min_element(picture.black.levels.begin(), picture.black.levels.end());
    if (picture.white && !(*picture.white > least_black)) {
        refuse_picture(name,
                       fmt::format("the white level {:g} is not above the black level {:g}",
                                   *picture.white, least_black),
                       "name both with --black and --white");
    }
    return picture;
}

Picture read_picture(const std::string& path, const PictureChoices& choices) {
    return decode_picture(read_text(path, kLargestPictureFile), path, choices);
}

}  // namespace imgtune::workbench
