#include "tools/vek/cli/outputs.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <vekdb/host/write_permission.h>
#include "formats/changing/file_names.h"
#include "formats/saving/file_sink.h"
#include "formats/text/letters.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace fs = std::filesystem;

bool isInput(const std::vector<std::string>& inputs, const std::string& output) {
    if (output.empty() || output == "-") return false;
    return std::any_of(inputs.begin(), inputs.end(),
                       [&](const std::string& input) { return isSameFile(input, output); });
}

void requireNoInput(const char* command, const std::vector<std::string>& inputs,
                    const std::string& output, const char* what) {
    if (!isInput(inputs, output)) return;
    throw Failure{wrongUsage, concat(command, ": ", output, " is a log that is read, and ", what,
                                     " would take its place; name another file")};
}

void requireNoBackupOver(const std::vector<std::string>& inputs, const std::string& output) {
    const std::string backup = backupOf(output);
    for (const std::string& input : inputs) {
        if (!isSameFile(input, backup) || isSameFile(input, output)) continue;
        throw Failure{unwritable,
                      concat(backup, ": is a log that is read, and --backup would put the old ",
                             output, " in its place; give it another name first")};
    }
}

void requireWritable(const std::string& path) {
    if (path.empty() || path == "-") return;
    FileReplacement file;
    if (!file.find(path.c_str())) refuse(path, file);
    if (const int error = errorOfWritePermission(path.c_str())) refuse(path, error);
}

bool isTaken(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

// What is held as nothing stays so until it is written, or the writing fails.
Held holdNewFile(const std::string& path) {
    Held held = holdFile(path);
    if (!isTaken(path)) return held;
    throw Failure{unwritable, path +
                                  ": was made by another program meanwhile, and is left as it "
                                  "is; give the command again to choose"};
}

namespace {

// Where a file of that folder is looked up, links of others are noticed.
void requireNoForeignLink(const fs::path& folder) {
    FileReplacement file;
    file.find((folder / "file").c_str());
    if (file.trouble() == FileReplacement::eForeignLink) refuse(folder.native(), file);
}

fs::path firstThere(fs::path folder) {
    std::error_code error;
    while (!folder.empty() && !fs::exists(folder, error)) folder = folder.parent_path();
    return folder;
}

// Also where the last link leads to nothing yet.
fs::path behindLinks(fs::path path) {
    constexpr int most = 40;
    std::error_code error;
    for (int i = 0; i < most && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

[[noreturn]] void refuseFolder(const fs::path& folder, const std::error_code& error) {
    throw Failure{unwritable,
                  concat(folder.native(), ": cannot be made a folder, ", error.message())};
}

}  // namespace

void requireMakeable(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) return requireWritable(path);
    const fs::path known = firstThere(folder);
    if (!known.empty() && !fs::is_directory(known, error)) {
        refuseFolder(folder, std::make_error_code(std::errc::not_a_directory));
    }
    requireNoForeignLink(known);
    if (const int rights = errorOfWritePermission((known / "file").c_str()))
        refuse(folder.native(), rights);
}

// A link of that name is replaced and not followed.
void requireBackup(const std::string& path) {
    if (path.empty() || path == "-" || !isThere(path)) return;
    const std::string backup = backupOf(path);
    std::error_code ignored;
    if (fs::is_directory(fs::symlink_status(backup, ignored))) refuseBackup(backup, EISDIR);
    const fs::path folder = fs::path(backup).parent_path();
    if (const int error = errorOfWritePermission((folder / "file").c_str())) refuse(backup, error);
}

void makeFolderOf(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) return;
    requireNoForeignLink(firstThere(folder));
    fs::create_directories(folder, error);
    if (error) refuseFolder(folder, error);
}

std::string placeOf(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(behindLinks(path), error);
    return foldedName(error ? path : whole.native());
}

}  // namespace vek
