#include "workbench/files/replay_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/frames/frame_check.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

Faults run_replay(const Tuning& tuning, const ReplayRequest& request, const FrameSeen& seen) {
    FrameFile file(request.log);
    FrameLog& log = file.log();
    Camera camera(tuning, request.jobs);
    std::optional<OutputFile> output;
    std::optional<RowWriter> writer;
    if (!request.output.empty()) {
        output.emplace(request.output);
        writer.emplace(*output, request.columns, request.row_thread);
        writer->write_header();
        file.source().before_waiting([&writer] { writer->flush(); });
    }
    FrameCheck check;
    Frame frame;
    for (std::uint64_t number = 1; log.next(frame); ++number) {
        camera.run(frame);
        check.add(log.values(), log.line());
        if (writer && (number - 1) % request.every == 0) {
            writer->write(number, log.values(), camera.registers());
        }
        if (seen) seen(log, number, frame, camera);
    }
    if (writer) {
        writer->finish();
        output->commit();
    }
    Faults found;
    check.report(log.name(), found);
    return found;
}

std::vector<std::string> results_in_folder(const std::string& folder,
                                           const std::vector<std::string>& logs, bool force) {
    std::vector<std::string> results;
    std::map<std::string, std::string> log_of;
    for (const std::string& log : logs) {
        const auto name = std::filesystem::path(log).stem();
        results.push_back((std::filesystem::path(folder) / name).string() + ".csv");
        const auto [before, is_new] = log_of.emplace(results.back(), log);
        if (!is_new) {
            throw BadInput(fmt::format("{} and {} would both be written to {}; run them separately",
                                       before->second, log, results.back()));
        }
        guard_output(results.back(), logs, or_anything(Replaces::rows, force));
    }
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw BadInput(fmt::format("{}: cannot make the folder: {}", folder, error.message()));
    return results;
}

unsigned at_a_time(std::size_t count, unsigned workers) {
    if (workers == 0) workers = std::max(std::thread::hardware_concurrency(), 1U);
    return static_cast<unsigned>(std::min<std::size_t>(workers, count));
}

void in_parallel(std::size_t count, unsigned workers,
                 const std::function<void(std::size_t)>& work) {
    std::atomic<std::size_t> next{0};
    std::exception_ptr failure;
    std::once_flag failed;
    const auto take = [&] {
        try {
            for (std::size_t i = next++; i < count; i = next++) work(i);
        } catch (...) {
            std::call_once(failed, [&] { failure = std::current_exception(); });
            next = count;
        }
    };
    std::vector<std::thread> threads;
    for (unsigned t = 1; t < at_a_time(count, workers); ++t) threads.emplace_back(take);
    take();
    for (std::thread& thread : threads) thread.join();
    if (failure) std::rethrow_exception(failure);
}

}  // namespace imgtune::workbench
