#include "workbench/files/report.h"

#include <fmt/format.h>
#include <zlib.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "workbench/files/text_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/frames/frame_check.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestPage = 8U << 20U;
constexpr std::size_t kLargestLog = 256U << 20U;  // what the page opens
constexpr const char* kPlace = "<!-- report -->";

std::string gzip(const std::string& text) {
    constexpr int kGzip = 15 + 16;  // the largest window, with gzip's header
    constexpr int kMemory = 9;
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kGzip, kMemory, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    std::string input = text;  // zlib takes no const
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw BadInput("the report cannot be packed: no memory");
    return packed;
}

std::string base64(const std::string& bytes) {
    constexpr const char* kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned word = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const unsigned byte =
                i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U;
            word = word << 8U | byte;
        }
        const std::size_t digits = std::min<std::size_t>(bytes.size() - i, 3) + 1;
        for (std::size_t k = 0; k < 4; ++k) {
            text += k < digits ? kDigits[word >> (18U - 6U * k) & 63U] : '=';
        }
    }
    return text;
}

std::string name_of(const std::string& path) {
    return path == "-" ? "standard input" : fs::path(path).filename().string();
}

}  // namespace

ReportFile tuning_for_report(const std::string& path) {
    std::string yaml;
    const Tuning tuning = require_tuning(path, &yaml);
    if (yaml.empty()) yaml = write_yaml(tuning);
    std::string name = name_of(path);
    if (fs::is_directory(path))
        name = fs::path(path).lexically_normal().filename().string() + ".yaml";
    return {name, yaml};
}

ReportFile frames_for_report(const std::string& path, const std::string& ahead,
                             std::uint64_t frame) {
    ReportFile file{name_of(path), ahead + read_text(path, kLargestLog), frame};
    if (file.text.size() > kLargestLog) {
        throw BadInput(fmt::format("{}: more than {} MB: larger than the page can open", file.name,
                                   kLargestLog >> 20U));
    }
    MemorySource source(file.text);
    FrameLog log(file.name, source);
    Frame read;
    std::uint64_t count = 0;
    while (log.next(read)) ++count;
    if (count == 0) throw BadInput(file.name + ": the log has no frames");
    if (frame > count) {
        throw BadInput(fmt::format("{}: there is no frame {}; the log has {}", file.name, frame,
                                   counted(count, "frame")));
    }
    return file;
}

std::string find_page() {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* place : {"../share/imgtune/imgtune.html", "../../imgtune.html"}) {
        const fs::path page = (folder / place).lexically_normal();
        if (fs::exists(page, error)) return page.string();
    }
    throw BadInput(
        "the page is not installed beside this program; name it with --page (scripts/page.sh "
        "builds it)");
}

std::string make_report(const std::string& page, const ReportFile& tuning,
                        const std::optional<ReportFile>& against,
                        const std::optional<ReportFile>& frames) {
    std::string html = read_text(page, kLargestPage);
    const std::size_t place = html.find(kPlace);
    if (place == std::string::npos || html.size() > kLargestPage) {
        throw BadInput(fmt::format("{}: not the page, or one that holds a report already", page));
    }
    nlohmann::ordered_json json = {{"tuning", tuning.text}, {"tuning_name", tuning.name}};
    if (frames) {
        json["frames"] = frames->text;
        json["frames_name"] = frames->name;
        json["frame"] = std::to_string(frames->frame);
    } else {
        json["live"] = "frames";  // where it gets them, beside its own address
    }
    if (against) {
        json["against"] = against->text;
        json["against_name"] = against->name;
    }
    const std::string text =
        json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    html.replace(place, std::string_view(kPlace).size(),
                 "<script type=\"application/octet-stream\" id=\"report\">" + base64(gzip(text)) +
                     "</script>");
    return html;
}

}  // namespace imgtune::workbench
