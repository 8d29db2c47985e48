#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "ccm/codec.h"
#include "wasm/engine.h"
#include "workbench/camera/locus.h"
#include "workbench/camera/register_values.h"
#include "workbench/json/diff.h"
#include "workbench/json/findings.h"
#include "workbench/studies/check.h"
#include "workbench/studies/diff.h"

namespace imgtune::workbench::page {

Answer Engine::load_tuning(const Json& arguments, std::string_view bytes) {
    Faults faults;
    Tuning tuning = read_tuning(arguments.at("files"), bytes, faults);
    if (faults.has_errors()) {
        faults.sort();
        throw Refused(faults);
    }
    check_tuning(tuning, faults);
    faults.sort();
    const Jobs jobs = jobs_of(tuning);
    camera_ = std::make_unique<Camera>(tuning, jobs);
    names_[0] = value_names(Job::ccm);
    names_[1] = value_names(Job::color);
    forget_runs();
    Answer answer;
    answer.json = to_json(faults);
    answer.json["name"] = tuning.name;
    answer.json["hasCcm"] = tuning.has_ccm;
    answer.json["hasColor"] = tuning.has_color;
    answer.json["ctGrid"] = tuning.caller.ct_grid;
    answer.json["codecOne"] = 1 << std::clamp(tuning.caller.frac_bits, 0, 12);
    answer.json["fullGain"] = tuning.caller.full_gain == 1;
    answer.json["colorNames"] = names_[1];
    return answer;
}

Answer Engine::save_tuning(const Json& arguments, std::string_view) {
    Answer answer;
    answer.json = Json::array();
    std::vector<StoredImage> files;
    if (arguments.at("form") == "yaml") {
        files.push_back(
            {tuning().name + ".yaml", write_yaml(tuning(), arguments.value("comments", false))});
    } else {
        files = to_images(tuning());
    }
    for (StoredImage& file : files) {
        answer.json.push_back(file.name);
        answer.blobs.push_back(std::move(file.bytes));
    }
    return answer;
}

Answer Engine::gain(const Json& arguments, std::string_view) {
    require_ccm();
    const AWB_GAIN_T gain = tuned_locus(tuning()).at(arguments.at("cct").get<std::uint32_t>());
    Answer answer;
    answer.json = Json::array({gain.i4R, gain.i4G, gain.i4B});
    return answer;
}

Answer Engine::plane(const Json&, std::string_view) {
    Answer answer;
    const auto& ccm = tuning().ccm;
    const CoefficientCodec codec(tuning().caller.int_bits, tuning().caller.frac_bits);
    const auto count = static_cast<std::size_t>(std::clamp(ccm.i4NumCT, 1, 8));
    Json rows = Json::array();
    for (const std::size_t row : {kRowNormal, kRowLowLight, kRowFlash}) {
        Json points = Json::array();
        for (std::size_t ct = 0; ct < count; ++ct) {
            const AWB_GAIN_T& gain = ccm.rCTAWBGain[row][ct];
            if (gain.i4R == 0 && gain.i4B == 0) continue;
            points.push_back({{"index", ct},
                              {"kelvin", tuning().kelvin[row][ct]},
                              {"gain", {gain.i4R, gain.i4G, gain.i4B}},
                              {"matrix", codec.decode(ccm.rCCM_Nvram[row][ct]).i4Coef}});
        }
        if (!points.empty()) rows.push_back({{"name", kRowNames[row]}, {"points", points}});
    }
    answer.json = {{"method", ccm.i4Method}, {"count", count}, {"rows", rows}};
    return answer;
}

Answer Engine::diff(const Json& arguments, std::string_view bytes) {
    Faults faults;
    const Tuning other = read_tuning(arguments.at("files"), bytes, faults);
    if (faults.has_errors()) throw Refused(faults);
    Answer answer;
    answer.json = to_json(diff_tunings(tuning(), other));
    return answer;
}

}  // namespace imgtune::workbench::page
