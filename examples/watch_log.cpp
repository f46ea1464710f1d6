// Listens to a table: which rows were deleted, and which records an update batch changed.
// usage: watch_log LOG

#include <cstdio>

#include <vekdb/host/cookie.h>
#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/notify.h>
#include <vekdb/host/text_util.h>
#include <vekdb/host/wrapped_data.h>
#include <vekdb/table.h>

namespace {

// Registers itself with a table and lets go before it ends.
class Watcher {
public:
    explicit Watcher(vekdb& table)
        : table_(table),
          deleted_(listen(kRecordsDeleted, &Watcher::rowsDeleted)),
          changed_(listen(kRecordsChanged, &Watcher::recordsChanged)) {}
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

private:
    using Callback = MethodCallback<Watcher, NotifyMsg, int>;
    using Listener = vekdb::Callback;

    Quor::Ptr<Quor::Guard> listen(const char* type, Callback::Method method) {
        int number = NotifyMsgTypeDictionary::instance().intern(type);
        return table_.registerNotification(Quor::Ptr<Listener>(new Callback(this, method)), number);
    }

    // The text holds the numbers that the rows had; the table has let go of them already.
    int rowsDeleted(const NotifyMsg& message) {
        for (NotifyMsgTokenIterator row(message); row; ++row) {
            std::printf("row %s is gone, %u are left\n", (*row).c_str(), table_.get_num_records());
        }
        return 0;
    }

    // A table names the records; a view, which also issues this notice, does not.
    int recordsChanged(const NotifyMsg& message) {
        auto* cookies = dynamic_cast<WrappedData<CookieVec>*>(message.object().get());
        std::printf("%u records changed\n", cookies ? cookies->data().size() : 0);
        return 0;
    }

    vekdb& table_;
    Quor::Ptr<Quor::Guard> deleted_;
    Quor::Ptr<Quor::Guard> changed_;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    Watcher watcher(log);
    log.delete_records(1, 2);

    log.beginUpdate();
    log.addToUpdate(Cookie::fromText("0123456789abcdef0123456789abcdef00004d"));
    log.endUpdate();
    return log.get_valid() ? 0 : 3;
}
