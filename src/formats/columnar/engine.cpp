#include "formats/columnar/engine.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr std::size_t piece = std::size_t{1} << 20;
constexpr std::size_t mostTold = 600;

// Its messages as one line that harms no terminal.
std::string toldIn(ScratchFile& messages) {
    std::string text(mostTold, ' ');
    text.resize(messages.read(0, text.data(), text.size()));
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    while (text.ends_with(' ')) text.pop_back();
    return text;
}

}  // namespace

void EngineFiles::require(const std::string& output) const {
    for (const ScratchFile* file : {&rows, &messages, &order, &made}) {
        if (file->error() == 0) continue;
        throw Failure{unwritable,
                      output,
                      {0, "", concat("no temporary file: ", std::strerror(file->error())), "",
                       "make room in the folder for temporary files"}};
    }
}

bool Engine::isDone(const std::vector<const char*>& command) {
    const ForeignEnd end =
        runForeignProgram(command, {files_.rows.descriptor(), files_.messages.descriptor(),
                                    files_.messages.descriptor(), files_.order.descriptor(),
                                    files_.made.descriptor()});
    if (end.error == ENOENT || (end.error == 0 && end.exitCode == notThere)) return false;
    if (end.error != 0) {
        refuse(concat(command[0], " cannot be started: ", std::strerror(end.error)));
    }
    if (end.exitCode == 0) return true;
    const std::string told = toldIn(files_.messages);
    refuse(concat(name_, " ended with ", std::to_string(end.exitCode),
                  told.empty() ? "" : " and said: ", told),
           "");
}

void Engine::refuse(const std::string& found, const std::string& then) const {
    throw Failure{unwritable, output_, {0, "", found, "", then}};
}

void handOn(ScratchFile& made, std::string_view mark, const std::string& engine, Output& out) {
    std::string bytes(piece, '\0');
    std::string last;
    std::uint64_t at = 0;
    while (const std::size_t size = made.read(at, bytes.data(), bytes.size())) {
        const std::string_view read(bytes.data(), size);
        if (at == 0 && !read.starts_with(mark)) break;
        out.write(read);
        last = concat(last, read.substr(size - std::min(size, mark.size())));
        last.erase(0, last.size() - std::min(last.size(), mark.size()));
        at += size;
    }
    if (made.error() == 0 && last == mark) return;
    throw Failure{unwritable, out.name(), {0, "", concat(engine, " made no whole file"), "", ""}};
}

}  // namespace vek::formats
