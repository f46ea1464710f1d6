// A panel that shows some rows of a log and follows what is done to it.
// usage: live_panel LOG

#include <cstdio>
#include <utility>

#include <vekdb/host/cookie.h>
#include <vekdb/host/notify.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

namespace {

// Shows the rows that are tagged in a lower view.
class Panel {
public:
    Panel(vekdb& log, VDBView lower)
        : lower_(std::move(lower)),
          rows_(lower_->newTagSubview()),
          tableTells_(listen(log, kRecordsChanged)),
          viewTells_(listen(*lower_, kRecordsDeleted)) {}

    // Between events, when nobody is being told anything: where rows went, choose them anew.
    void idle() {
        if (!std::exchange(isStale_, false)) return;
        rows_->clear();
        rows_->displayTaggedRecordsAt(0);
        draw();
    }

    void draw() const {
        const unsigned description = rows_->get_fieldnum("Description");
        for (unsigned row = 0; row < rows_->get_num_records(); ++row) {
            std::printf("  %s\n", rows_->getField(row, description).c_str());
        }
    }

private:
    using Callback = MethodCallback<Panel, NotifyMsg, int>;

    Quor::Ptr<Quor::Guard> listen(Notifier& source, const char* type) {
        const int number = NotifyMsgTypeDictionary::instance().intern(type);
        return source.registerNotification(
            Quor::Ptr<Notifier::Callback>(new Callback(this, &Panel::changed)), number);
    }

    // A listener notes what is to be done, and does not do it while it is told.
    int changed(const NotifyMsg&) {
        isStale_ = true;
        return 0;
    }

    VDBView lower_;
    VDBView rows_;
    Quor::Ptr<Quor::Guard> tableTells_;  // go first, so that nobody is told of a panel that went
    Quor::Ptr<Quor::Guard> viewTells_;
    bool isStale_ = false;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    if (!log.get_valid()) return 1;

    VDBView lower(&log);
    lower->displayAllRecords();
    lower->set_tag(0, 1);
    lower->set_tag(4, 1);
    Panel panel(log, lower);
    std::printf("at first\n");
    panel.draw();

    // A changed cell is told where the change stands in a bracket and names its record.
    log.beginUpdate();
    log.set_field(4, log.get_fieldnum("Description"), "WS clock, stopped");
    log.addToUpdate(Cookie());
    log.endUpdate();
    std::printf("after an edit\n");
    panel.idle();

    // Deletions are always told.
    log.delete_records(0, 2);
    std::printf("after a deletion\n");
    panel.idle();
}
