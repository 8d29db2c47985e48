#include "workbench/files/tuning_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "workbench/files/output_file.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLargestImage = 1 << 20;

void add_unreadable(Faults& faults, const std::string& file, const char* what,
                    const char* suggestion) {
    Fault fault;
    fault.code = "T010";
    fault.file = file;
    fault.message = fmt::format("cannot {} the file: {}", what, std::strerror(errno));
    fault.suggestion = suggestion;
    faults.add(std::move(fault));
}

Tuning read_images(const std::string& folder, Faults& faults) {
    std::vector<StoredImage> images;
    for (const std::string& name : stored_image_names()) {
        const std::string file = (fs::path(folder) / name).string();
        std::error_code error;
        if (!fs::exists(file, error) && !error) continue;
        std::ifstream in(file, std::ios::binary);
        StoredImage image{name, std::string(kLargestImage, '\0')};
        in.read(image.bytes.data(), static_cast<std::streamsize>(image.bytes.size()));
        if (!in.is_open() || in.bad()) {
            add_unreadable(faults, file, "read", "");
            continue;
        }
        image.bytes.resize(static_cast<std::size_t>(in.gcount()));
        images.push_back(std::move(image));
    }
    return from_images(images, folder, faults);
}

/// A part that the tuning does not have must not be left over from another.
void refuse_left_over(const std::string& folder, const std::vector<StoredImage>& images) {
    for (const std::string& name : stored_image_names()) {
        const bool written = std::any_of(images.begin(), images.end(),
                                         [&](const StoredImage& i) { return i.name == name; });
        if (const fs::path old = fs::path(folder) / name; !written && fs::exists(old)) {
            throw BadInput(
                fmt::format(
                    "{}: already exists, but the tuning has no such part; remove it or choose "
                    "another folder",
                    old.string()),
                {old.string()});
        }
    }
}

}  // namespace

Tuning load_tuning(const std::string& path, Faults& faults, std::string* yaml) {
    std::error_code error;
    if (path != "-" && fs::is_directory(path, error)) return read_images(path, faults);
    std::ifstream file;
    if (path != "-") file.open(path, std::ios::binary);
    if (path != "-" && !file) {
        add_unreadable(faults, path, "open", "name a YAML file, or a folder of stored images");
        return {};
    }
    std::istream& in = path == "-" ? std::cin : file;
    const std::string name = path == "-" ? "standard input" : path;
    std::string text;
    char buffer[1U << 16U];
    while (text.size() <= kLargestTuningText &&
           (in.read(buffer, sizeof(buffer)), in.gcount() > 0)) {
        text.append(buffer, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        add_unreadable(faults, name, "read", "");
        return {};
    }
    Tuning tuning = read_yaml(text, name, faults);
    if (yaml != nullptr) *yaml = std::move(text);
    return tuning;
}

Tuning require_tuning(const std::string& path, std::string* yaml) {
    Faults faults;
    Tuning tuning = load_tuning(path, faults, yaml);
    if (faults.has_errors()) {
        faults.sort();
        std::string text = faults.text();
        text.pop_back();
        const Fault& first =
            *std::find_if(faults.list().begin(), faults.list().end(),
                          [](const Fault& fault) { return fault.severity == Severity::error; });
        throw BadInput("the tuning cannot be used\n" + text,
                       {first.file, static_cast<std::uint64_t>(first.line), first.path});
    }
    return tuning;
}

void write_images(const std::string& folder, const Tuning& tuning) {
    const std::vector<StoredImage> images = to_images(tuning);
    try {
        refuse_left_over(folder, images);
        const bool made = fs::create_directories(folder);
        std::vector<std::unique_ptr<OutputFile>> files;
        try {
            for (const StoredImage& image : images) {
                files.push_back(
                    std::make_unique<OutputFile>((fs::path(folder) / image.name).string()));
                files.back()->write(image.bytes);
                files.back()->check();
            }
            for (const auto& file : files) file->commit();
        } catch (...) {
            files.clear();
            std::error_code ignored;
            if (made) fs::remove(folder, ignored);
            throw;
        }
    } catch (const fs::filesystem_error& error) {
        throw BadInput(fmt::format("{}: {}", folder, error.code().message()), {folder});
    }
}

}  // namespace imgtune::workbench
