#include "tools/vek/convert/many.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

#include "formats/changing/file_names.h"
#include "formats/formats.h"
#include "formats/packed/packed.h"
#include "formats/reading/documents.h"
#include "tools/vek/cli/each_log.h"
#include "tools/vek/cli/log_files.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/pieces.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"

namespace vek::convert {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostTold = 20;
constexpr std::size_t mostLossy = 3;  // files whose losses are told one by one

// A log, and the file that is made of it.
struct Job {
    std::string input;
    std::string output;
};

// "day.vek" and "day.vek.gz" become "day.csv".
std::string outputName(const std::string& name, Format target) {
    const std::string_view unpacked = withoutPackedEnding(name);
    const std::size_t dot = unpacked.rfind('.');
    const bool hasEnding = dot != std::string_view::npos && dot > 0;
    return concat(hasEnding ? unpacked.substr(0, dot) : unpacked, endingOf(target));
}

// By hard links; paths do not tell those.
bool hasFurtherNames(const std::string& path) {
    std::error_code error;
    const auto count = fs::hard_link_count(path, error);
    return !error && count > 1;
}

// Of a folder that stands for a document that one.
fs::path named(const fs::path& file) {
    const fs::path folder = file.parent_path();
    const bool isDocument =
        isDocumentFolder(folder.native()) && pathOfDocument(folder.native()) == file.native();
    return isDocument ? folder : file;
}

std::vector<std::string> inputsOf(const std::vector<Job>& jobs) {
    std::vector<std::string> inputs;
    for (const Job& job : jobs) inputs.push_back(job.input);
    return inputs;
}

class Plan {
public:
    Plan(const std::string& output, const Args& args)
        : output_(output), args_(args), target_(targetNamed(args.text("to"))) {}

    // What stands in a folder keeps its place below it.
    void add(const std::string& path) {
        if (path == "-") refuseNameless();
        const LogFiles files = logFilesIn({path}, args_);
        areAll_ = areAll_ && files.areAll;
        std::error_code error;
        const bool isFolder = fs::is_directory(path, error);
        for (const std::string& file : files.paths) {
            const fs::path whole = named(file);
            const bool isBelow = isFolder && !isDocumentFolder(path);
            add(file, (isBelow ? whole.lexically_relative(path) : whole.filename()).native());
        }
    }

    const std::vector<Job>& jobs() const { return jobs_; }
    bool areAll() const { return areAll_; }

    // The files are called as the logs are.
    [[noreturn]] static void refuseNameless() {
        throw Failure{wrongUsage,
                      "convert: the standard input has no name that a file could be called by, "
                      "expected files and folders; convert it by itself, convert - OUT"};
    }

    // Everything that can be known to go wrong is known before the first file is written.
    void require() {
        if (jobs_.empty()) throw Failure{unreadable, "convert: no log is there"};
        requireOneEach();
        requireFree();
    }

private:
    void add(const std::string& file, const std::string& name) {
        const fs::path folder = output_.empty() ? named(file).parent_path() : fs::path(output_);
        const fs::path below = output_.empty() ? fs::path(name).filename() : fs::path(name);
        const std::string ending = outputName(below.filename().native(), target_);
        jobs_.push_back({file, (folder / below.parent_path() / ending).native()});
    }

    // Whatever names lead to one file, links and those that differ in case alone included.
    void requireOneEach() const {
        std::unordered_map<std::string, const Job*> known;
        std::vector<const Job*> linked;
        for (const Job& job : jobs_) {
            const auto [other, isNew] = known.try_emplace(placeOf(job.output), &job);
            if (!isNew) refuseTwo(*other->second, job);
            if (!hasFurtherNames(job.output)) continue;
            for (const Job* one : linked) {
                if (isSameFile(one->output, job.output)) refuseTwo(*one, job);
            }
            linked.push_back(&job);
        }
    }

    [[noreturn]] static void refuseTwo(const Job& one, const Job& other) {
        throw Failure{wrongUsage,
                      concat("convert: ", one.input, " and ", other.input, " would both become ",
                             other.output,
                             ", nothing is written; name the folder that both stand in, below "
                             "which each keeps its place, or convert them one by one")};
    }

    void requireFree() const {
        std::unordered_set<std::string> inputs;
        std::size_t count = 0;
        for (const Job& job : jobs_) {
            std::error_code error;
            if (!isTaken(job.output)) continue;
            if (inputs.empty()) inputs = realInputs();
            if (inputs.contains(fs::weakly_canonical(job.output, error).native()) ||
                (hasFurtherNames(job.output) && isInput(inputsOf(jobs_), job.output))) {
                throw Failure{unwritable, job.output +
                                              ": is one of the logs that are read, nothing is "
                                              "written; say where to with -o FOLDER"};
            }
            if (!args_.has("overwrite") && ++count <= mostTold) {
                sayFailure(job.output + ": is there already");
            }
        }
        if (count == 0) return;
        throw Failure{unwritable, concat(counted(count, "file is", "files are"),
                                         " there already, nothing is written; --overwrite replaces "
                                         "them")};
    }

    std::unordered_set<std::string> realInputs() const {
        std::unordered_set<std::string> inputs;
        for (const Job& job : jobs_) {
            std::error_code error;
            inputs.insert(fs::weakly_canonical(job.input, error).native());
        }
        return inputs;
    }

    std::string output_;
    const Args& args_;
    Format target_;
    std::vector<Job> jobs_;
    bool areAll_ = true;
};

// Converts log after log. One that cannot be read is told, and the others go on.
class Converter {
public:
    Converter(const Args& args, std::size_t total)
        : args_(args), target_(targetNamed(args.text("to"))), total_(total) {}

    void convert(const Job& job) {
        try {
            write(job);
            ++written_;
        } catch (const Failure& failure) {
            if (!isOfOneLog(failure)) refuse(failure);
            sayFailure(failure.text);
            result_ = std::max(result_, exitCodeOf(failure.kind));
        }
    }

    void tellEnd() const {
        if (lossy_ > mostLossy) {
            say(concat("convert: ", counted(lossy_ - mostLossy, "more file"), " with such losses"));
        }
        say(concat("convert: ", std::to_string(written_), " of ", counted(total_, "log"),
                   " written as ", formatName(target_)));
    }

    int result() const { return result_; }

private:
    void write(const Job& job) {
        const Log log = readLog(job.input, args_);
        makeFolderOf(job.output);
        Printout out(job.output, args_.has("overwrite") ? nullptr : holdNewFile(job.output));
        Losses losses;
        writeSheet(wholeSheet(log), target_, styleFrom(args_, target_), out, losses);
        out.close();
        if (losses.count() > 0 && ++lossy_ <= mostLossy) tellLosses(losses, out.name());
        result_ = std::max(result_, readingResult(log));
    }

    [[noreturn]] void refuse(const Failure& failure) const {
        throw Failure{failure.kind, concat(failure.text, "; ", std::to_string(written_), " of ",
                                           counted(total_, "file"), " were written before")};
    }

    Args args_;
    Format target_;
    std::size_t total_;
    std::size_t written_ = 0;
    std::size_t lossy_ = 0;
    int result_ = done;
};

int listed(const std::vector<Job>& jobs, const Args& args) {
    for (const Job& job : jobs) requireMakeable(job.output);
    Printout out;
    for (const Job& job : jobs) out.line(concat(job.input, " -> ", job.output));
    out.close();
    say(concat("convert: ", counted(jobs.size(), "log"), " would be written as ", args.text("to")));
    return done;
}

}  // namespace

int convertEach(const std::vector<std::string>& paths, const std::string& output,
                const Args& args) {
    if (!args.has("to")) {
        throw Failure{wrongUsage,
                      "convert: into which format? several logs need --to, such as --to csv"};
    }
    styleFrom(args, targetNamed(args.text("to")));
    Plan plan(output, args);
    for (const std::string& path : paths) plan.add(path);
    plan.require();
    if (args.has("dry-run")) return listed(plan.jobs(), args);
    Args each = args;
    each.set("IN", inputsOf(plan.jobs()));
    Converter converter(each, plan.jobs().size());
    for (const Job& job : plan.jobs()) converter.convert(job);
    converter.tellEnd();
    return plan.areAll() ? converter.result() : exitCodeOf(unreadable);
}

}  // namespace vek::convert
