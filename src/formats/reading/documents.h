#pragma once

#include <string>
#include <string_view>

#include "formats/failure.h"

namespace vek::formats {

struct Log;

/// Refuses a text that begins as a page, a document or a timeline of a kind that is not read, and
/// that would else be taken for cells between marks. `head` is what it begins with.
void refuseDocument(std::string_view head, const Log& log);

/// Whether a path is that of a folder which stands for one document, as FCPXML comes, too.
bool isDocumentFolder(std::string_view path);
/// The document in such a folder, and any other path as it is.
std::string pathOfDocument(const std::string& path);

}  // namespace vek::formats
