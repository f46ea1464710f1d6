#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

/// Names of files that are made of texts from a log.
namespace vek::formats {

struct FileName {
    std::string path;
    bool isAsMeant = true;  ///< no value in it had to be changed
};

/// Puts a path together. What a person wrote stands as it is; values of a log never lead into
/// another folder, hide a file, or make a name that some system does not have.
class FileNameBuilder {
public:
    void addText(std::string_view text);
    void addValue(std::string_view value);
    FileName take();

private:
    bool isAtStart() const { return name_.path.size() == begin_; }
    void endPart();

    FileName name_;
    std::size_t begin_ = 0;  // of what stands behind the last slash
    bool hasValue_ = false;  // whether a value is in that
};

/// Names that were given, so that none is given twice, also where case is ignored and where
/// composed letters are taken for those that are made of two.
class FreeNames {
public:
    /// The path, or with _2, _3, ... in front of its ending the first that is free.
    std::string freeOne(const std::string& path);

private:
    std::set<std::string> taken_;
    std::map<std::string, std::size_t> next_;  // number that may be free, of each name
};

/// Whether both are there and one file.
bool isSameFile(const std::string& a, const std::string& b);

}  // namespace vek::formats
