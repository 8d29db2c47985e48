// Writes examples/captures: sample_captures SPECTRA.CSV FOLDER

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include "support/chart_scene.h"
#include "support/picture_writers.h"
#include "workbench/appearance/patches.h"

using namespace imgtune::workbench;

namespace {

void write_reference(const std::string& path, const ChartReference& reference) {
    std::ofstream file(path);
    file << "# linear sRGB under D65 of the reflectances that the photographs are made "
            "of\npatch,r,g,b\n";
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        char line[120];
        std::snprintf(line, sizeof(line), "%s,%.5f,%.5f,%.5f\n", chart_patches()[i].name,
                      reference.rgb[i][0], reference.rgb[i][1], reference.rgb[i][2]);
        file << line;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const Spectra spectra(argv[1]);
    const std::string folder = std::string(argv[2]) + '/';
    Shot shot;
    shot.width = 192;
    shot.height = 144;
    shot.corners = {{{27.7, 24.0}, {167.2, 19.3}, {172.0, 118.2}, {24.7, 112.8}}};
    shot.order = {2, 1, 1, 0};
    shot.shading = 0.3;
    shot.color_shading = 0.04;
    shot.noise = 0.01;
    shot.black = 256.0;
    shot.white = 4095.0;
    const struct {
        const char* file;
        const char* light;
    } lights[] = {{"a_2856k.dng", "light_A"},
                  {"tl84_4000k.dng", "light_FL11"},
                  {"d50_5003k.dng", "light_D50"},
                  {"d65_6504k.dng", "light_D65"}};
    std::ofstream corners(folder + "corners.csv");
    corners << "file,x1,y1,x2,y2,x3,y3,x4,y4\n";
    for (const auto& each : lights) {
        const auto seen = spectra.seen_by("camera_a6400", spectra.column(each.light));
        shot.exposure = 0.75 / *std::max_element(seen.white.begin(), seen.white.end());
        ++shot.seed;
        write_dng(folder + each.file, take(shot, seen));
        corners << each.file << ",27.7,24.0,167.2,19.3,172.0,118.2,24.7,112.8\n";
        Shot flat = shot;
        flat.is_flat = true;
        if (each.light == std::string("light_D65"))
            write_dng(folder + "flat.dng", take(flat, seen));
    }
    write_reference(folder + "reference.csv", spectra.reference());
    return 0;
}
