#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/foreign_program.h>
#include "formats/writing/output.h"

/// Programs of others that write a format. They are looked for when they are needed, and nothing of
/// them is linked.
namespace vek::formats {

/// Files for an engine to read and to write.
struct EngineFiles {
    ScratchFile rows;      ///< what it reads: its descriptor 0
    ScratchFile messages;  ///< what it says
    ScratchFile order;     ///< what it is to do: its descriptor 3
    ScratchFile made;      ///< what it writes: its descriptor 4

    /// A Failure with `unwritable` where one of them could not be made or written.
    void require(const std::string& output) const;
};

/// How an engine ends that finds out that a part of it is missing.
inline constexpr int notThere = 77;

/// What Python scripts begin with: modules that lie in the folder in which a person works are none
/// of an engine.
inline constexpr const char* ownModulesAlone = R"PY(
import sys
sys.path[:] = [folder for folder in sys.path if folder]
)PY";

/// Has an engine carry out an order.
class Engine {
public:
    /// The name is for messages. `advice` says what to install.
    Engine(std::string name, std::string advice, EngineFiles& files, const std::string& output)
        : name_(std::move(name)), advice_(std::move(advice)), files_(files), output_(output) {}

    /// Whether the program is there, and all that it needs, and did it; a Failure where it failed.
    bool isDone(const std::vector<const char*>& command);
    [[noreturn]] void refuse(const std::string& found) const { refuse(found, advice_); }
    [[noreturn]] void refuse(const std::string& found, const std::string& then) const;

private:
    std::string name_;
    std::string advice_;
    EngineFiles& files_;
    const std::string& output_;
};

/// Hands on what an engine made. A Failure where the file is not whole as far as its marks say,
/// which stand in front of it and at its end.
void handOn(ScratchFile& made, std::string_view mark, const std::string& engine, Output& out);

}  // namespace vek::formats
