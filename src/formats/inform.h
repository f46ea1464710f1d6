#pragma once

#include <string>

namespace vek::formats {

/// Who hears what is found on the way; nobody as long as nobody asked.
using Informer = void (*)(const std::string& text);
void setInformer(Informer informer);

/// Tells one message, a line without its end.
void inform(const std::string& text);

}  // namespace vek::formats
