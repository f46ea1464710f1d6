// What an application that embeds the library does first: loads a log and reads it. It also
// proves that the process has the library's allocation operators, the whole set of them.

#include <cstdio>
#include <new>

#include <vekdb/host/os.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

namespace {

class Counting final : public iAllocator {
public:
    Counting() : previous_(OS()->setAllocator(this)) {}
    ~Counting() { OS()->setAllocator(previous_); }

    void* allocate(std::size_t size) override {
        ++taken;
        return previous_->allocate(size);
    }
    void* reallocate(void* block, std::size_t size) override {
        return previous_->reallocate(block, size);
    }
    void free(void* block) override {
        ++released;
        previous_->free(block);
    }

    int taken = 0;
    int released = 0;

private:
    iAllocator* previous_;
};

bool operatorsAreTheLibrarys() {
    Counting counting;
    ::operator delete(::operator new(1));
    ::operator delete[](::operator new[](1));
    ::operator delete(::operator new(1, std::nothrow), std::nothrow);
    ::operator delete[](::operator new[](1, std::nothrow), std::nothrow);
    return counting.taken == 4 && counting.released == 4;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2 || !operatorsAreTheLibrarys()) {
        std::puts("the allocation operators are not the library's");
        return 1;
    }
    vekdb table(fromUTF8(LightweightString<char>(arguments[1])), 1000, true);
    VDBView view(&table);
    view->displayAllRecords();
    std::printf("%u rows, %u columns\n", view->get_num_records(), table.get_num_fields());
    return view->get_num_records() == 6 && table.get_num_fields() == 8 ? 0 : 1;
}
