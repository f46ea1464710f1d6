#include "model/side_by_side.h"

#include "model/perform.h"
#include "model/worlds.h"

namespace script {

namespace {

// Orders of rows without a record are nobody's business, and neither are the duplicates of a
// view that has lost its table.
bool isDefined(ModelWorld& world, const Step& step) {
    if (world.viewCount() == 0) {
        return true;
    }
    const plain::View& view = world.view(static_cast<unsigned>(step.who) % world.viewCount());
    switch (step.op) {
        case Op::viewSort:
            return view.showsOnlyRecords();
        case Op::tagDuplicates:
        case Op::viewTagAllDifferent:
            return view.table() != nullptr && view.showsOnlyRecords();
        default:
            return true;
    }
}

std::string lastStep(const Account& account) {
    const std::size_t start = account.text().rfind(startOfStep);
    return start != std::string::npos ? account.text().substr(start) : account.text();
}

}  // namespace

std::optional<Difference> runBoth(const Script& script, bool reading) {
    Performer<LibraryWorld> library(script.rows, reading);
    Performer<ModelWorld> model(script.rows, reading);
    for (std::size_t i = 0; i < script.steps.size(); ++i) {
        if (!isDefined(model.world(), script.steps[i])) {
            continue;
        }
        library.perform(script.steps[i]);
        model.perform(script.steps[i]);
        if (library.account().digest() != model.account().digest() ||
            library.account().text() != model.account().text()) {
            return Difference{i, lastStep(library.account()), lastStep(model.account())};
        }
    }
    return std::nullopt;
}

}  // namespace script
