#include "formats/inform.h"

namespace vek::formats {

namespace {

Informer theInformer = nullptr;

}  // namespace

void setInformer(Informer informer) {
    theInformer = informer;
}

void inform(const std::string& text) {
    if (theInformer != nullptr) theInformer(text);
}

}  // namespace vek::formats
