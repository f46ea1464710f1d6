#include <vekdb/host/notify.h>

#include "testing/failing_allocator.h"
#include "testing/print_strings.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Callback = iCallbackBase<int, NotifyMsg>;
using CallbackPtr = Quor::Ptr<Callback>;
using GuardPtr = Quor::Ptr<Quor::Guard>;

constexpr int kType = 7;
constexpr int kOther = 8;

// Does as it is told, whenever it is called.
class TestCallback : public Callback {
public:
    explicit TestCallback(std::function<void(const NotifyMsg&)> action)
        : action_(std::move(action)) {}
    int call(const NotifyMsg& message) override {
        action_(message);
        return 1;
    }

private:
    std::function<void(const NotifyMsg&)> action_;
};

CallbackPtr calling(std::function<void(const NotifyMsg&)> action) {
    return CallbackPtr(new TestCallback(std::move(action)));
}

// Callbacks that write their name down.
class Journal {
public:
    CallbackPtr writer(char name) {
        return calling([this, name](const NotifyMsg&) { calls += name; });
    }
    std::string calls;
};

const NotifyMsg kMessage("text", nullptr);

TEST(NotifyMsgTypeDictionary, NumbersStartAtOneAndStay) {
    NotifyMsgTypeDictionary& dictionary = NotifyMsgTypeDictionary::instance();
    const int deleted = dictionary.intern("recordsDeleted");
    const int changed = dictionary.intern("recordsChanged");
    EXPECT_GE(deleted, 1);
    EXPECT_GE(changed, 1);
    EXPECT_NE(deleted, changed);
    EXPECT_EQ(dictionary.intern("recordsDeleted"), deleted);
    EXPECT_EQ(NotifyMsgTypeDictionary::instance().intern("recordsChanged"), changed);
}

TEST(NotifyMsgTypeDictionary, NumbersAreSmall) {
    NotifyMsgTypeDictionary& dictionary = NotifyMsgTypeDictionary::instance();
    const int first = dictionary.intern("a type of its own");
    EXPECT_EQ(dictionary.intern("and another one"), first + 1);
}

TEST(NotifyMsgTypeDictionary, NamesDifferByCase) {
    NotifyMsgTypeDictionary& dictionary = NotifyMsgTypeDictionary::instance();
    EXPECT_NE(dictionary.intern("recordsDeleted"), dictionary.intern("RecordsDeleted"));
}

TEST(NotifyMsgTypeDictionary, GivesTheNameBack) {
    NotifyMsgTypeDictionary& dictionary = NotifyMsgTypeDictionary::instance();
    EXPECT_EQ(dictionary.name(dictionary.intern("recordsDeleted")), "recordsDeleted");
    EXPECT_TRUE(dictionary.name(0).empty());
    EXPECT_TRUE(dictionary.name(-1).empty());
    EXPECT_TRUE(dictionary.name(1000000).empty());
}

class Payload : public iObject {};

TEST(NotifyMsg, CarriesTextAndObject) {
    const Quor::Ptr<iObject> object(new Payload);
    const NotifyMsg both("3 4 ", object);
    EXPECT_EQ(both.text(), "3 4 ");
    EXPECT_EQ(both.object().get(), object.get());
}

TEST(NotifyMsg, MadeOfAnObjectAloneHasNoText) {
    const Quor::Ptr<iObject> object(new Payload);
    const NotifyMsg message(object);
    EXPECT_TRUE(message.text().empty());
    EXPECT_EQ(message.object().get(), object.get());
}

TEST(NotifyMsg, TextAndObjectMayBothBeNull) {
    const NotifyMsg message("", nullptr);
    EXPECT_TRUE(message.text().empty());
    EXPECT_FALSE(message.object());
    EXPECT_FALSE(NotifyMsg().object());
}

TEST(NotifyMsg, SharesItsObject) {
    static int alive;
    struct Counted : iObject {
        Counted() { ++alive; }
        ~Counted() override { --alive; }
    };
    NotifyMsg kept;
    {
        const NotifyMsg message("a", Quor::Ptr<iObject>(new Counted));
        kept = message;
    }
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(kept.text(), "a");
    kept = NotifyMsg();
    EXPECT_EQ(alive, 0);
}

std::vector<std::string> tokensOf(const char* text) {
    std::vector<std::string> tokens;
    for (NotifyMsgTokenIterator token(NotifyMsg(text, nullptr)); token; ++token) {
        EXPECT_EQ((*token).view(), token.token());
        tokens.emplace_back(token.token());
    }
    return tokens;
}

TEST(NotifyMsgTokenIterator, StepsThroughBlankSeparatedTokens) {
    EXPECT_EQ(tokensOf("3 4 "), (std::vector<std::string>{"3", "4"}));
    EXPECT_EQ(tokensOf("  3   14"), (std::vector<std::string>{"3", "14"}));
    EXPECT_EQ(tokensOf("one"), (std::vector<std::string>{"one"}));
}

TEST(NotifyMsgTokenIterator, NoTextHasNoTokens) {
    EXPECT_EQ(tokensOf(""), std::vector<std::string>{});
    EXPECT_EQ(tokensOf("   "), std::vector<std::string>{});
}

TEST(NotifyMsgTokenIterator, StaysBehindTheLastToken) {
    NotifyMsgTokenIterator token(NotifyMsg("1", nullptr));
    ++token;
    ++token;
    EXPECT_FALSE(token);
    EXPECT_TRUE((*token).empty());
}

TEST(NotifyMsgTokenIterator, CopyGoesOnByItself) {
    NotifyMsgTokenIterator token(NotifyMsg("1 2 3", nullptr));
    NotifyMsgTokenIterator copy = token;
    ++copy;
    EXPECT_EQ(token.token(), "1");
    EXPECT_EQ(copy.token(), "2");
}

TEST(Notifier, CallsEveryCallbackOfTheTypeInOrderOfRegistration) {
    Notifier notifier;
    Journal journal;
    const GuardPtr a = notifier.registerNotification(journal.writer('a'), kType);
    const GuardPtr x = notifier.registerNotification(journal.writer('x'), kOther);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "ab");
    notifier.issueNotification(kMessage, kOther);
    EXPECT_EQ(journal.calls, "abx");
    notifier.issueNotification(kMessage, 9);
    EXPECT_EQ(journal.calls, "abx");
}

TEST(Notifier, HandsTheMessageOver) {
    Notifier notifier;
    const Quor::Ptr<iObject> object(new Payload);
    const NotifyMsg sent("3 4 ", object);
    const NotifyMsg* received = nullptr;
    const GuardPtr guard = notifier.registerNotification(
        calling([&](const NotifyMsg& message) { received = &message; }), kType);
    notifier.issueNotification(sent, kType);
    EXPECT_EQ(received, &sent);
}

TEST(Notifier, CallbackRegisteredTwiceIsCalledTwice) {
    Notifier notifier;
    Journal journal;
    const CallbackPtr callback = journal.writer('a');
    const GuardPtr first = notifier.registerNotification(callback, kType);
    GuardPtr second = notifier.registerNotification(callback, kType);
    EXPECT_FALSE(first->id() == second->id());
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "aa");
    second.reset();
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "aaa");
}

TEST(Notifier, NullCallbackIsNotRegistered) {
    Notifier notifier;
    EXPECT_FALSE(notifier.registerNotification(nullptr, kType));
    EXPECT_FALSE(notifier.hasListeners(kType));
    notifier.issueNotification(kMessage, kType);
}

TEST(Notifier, DroppedGuardEndsTheRegistration) {
    Notifier notifier;
    Journal journal;
    GuardPtr guard = notifier.registerNotification(journal.writer('a'), kType);
    GuardPtr copy = guard;
    guard.reset();
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
    copy.reset();
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
}

TEST(Notifier, DeregisteringByGuardLetsGoOfIt) {
    Notifier notifier;
    Journal journal;
    GuardPtr guard = notifier.registerNotification(journal.writer('a'), kType);
    const GuardPtr copy = guard;
    notifier.deregisterNotification(guard);
    EXPECT_FALSE(guard);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "");
}

TEST(Notifier, DeregisteringByStampEndsTheRegistration) {
    Notifier notifier;
    Journal journal;
    const GuardPtr a = notifier.registerNotification(journal.writer('a'), kType);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.deregisterNotification(a->id());
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "b");
}

TEST(Notifier, DeregisteringTwiceDoesNothing) {
    Notifier notifier;
    Journal journal;
    GuardPtr a = notifier.registerNotification(journal.writer('a'), kType);
    GuardPtr again = a;
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.deregisterNotification(a->id());
    notifier.deregisterNotification(a->id());
    notifier.deregisterNotification(a);
    notifier.deregisterNotification(a);
    notifier.deregisterNotification(again);
    notifier.deregisterNotification(IdStamp());
    EXPECT_FALSE(again);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "b");
}

TEST(Notifier, GuardOfAnotherNotifierIsLeftAlone) {
    Notifier one;
    Notifier two;
    Journal journal;
    GuardPtr guard = one.registerNotification(journal.writer('a'), kType);
    two.deregisterNotification(guard);
    two.deregisterNotification(guard->id());
    one.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
}

TEST(Notifier, GuardMayOutliveItsNotifier) {
    auto notifier = std::make_unique<Notifier>();
    Notifier other;
    Journal journal;
    GuardPtr guard = notifier->registerNotification(journal.writer('a'), kType);
    notifier.reset();
    other.deregisterNotification(guard);
    other.deregisterNotification(guard->id());
    EXPECT_TRUE(guard);
    guard.reset();
    EXPECT_EQ(journal.calls, "");
}

TEST(Notifier, CallbackIsLetGoWhenItsRegistrationEnds) {
    static int alive;
    struct Counted : Callback {
        Counted() { ++alive; }
        ~Counted() override { --alive; }
        int call(const NotifyMsg&) override { return 0; }
    };
    auto notifier = std::make_unique<Notifier>();
    GuardPtr dropped = notifier->registerNotification(CallbackPtr(new Counted), kType);
    GuardPtr deregistered = notifier->registerNotification(CallbackPtr(new Counted), kType);
    const GuardPtr left = notifier->registerNotification(CallbackPtr(new Counted), kType);
    EXPECT_EQ(alive, 3);
    dropped.reset();
    EXPECT_EQ(alive, 2);
    notifier->deregisterNotification(deregistered);
    EXPECT_EQ(alive, 1);
    notifier.reset();
    EXPECT_EQ(alive, 0);
}

// The callback alone keeps alive what holds the guard of its registration. Not one block with
// its counts, so that its memory goes with it.
TEST(Notifier, DeregisteringMayDestroyTheHolderOfTheGuard) {
    Notifier notifier;
    std::shared_ptr<GuardPtr> holder(new GuardPtr);
    GuardPtr& guard = *holder;
    guard = notifier.registerNotification(calling([holder](const NotifyMsg&) {}), kType);
    const std::weak_ptr<GuardPtr> watched = holder;
    holder.reset();
    notifier.deregisterNotification(guard);
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(notifier.hasListeners(kType));
}

TEST(Notifier, MemoryFailureLeavesNoRegistration) {
    Notifier notifier;
    Journal journal;
    const CallbackPtr callback = journal.writer('a');
    GuardPtr guard;
    testing_support::failEachAllocation(
        [&] { guard = notifier.registerNotification(callback, kType); },
        [&] { EXPECT_FALSE(notifier.hasListeners(kType)); });
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
}

TEST(Notifier, CallbackLeftByAMemoryFailureIsLetGoWithTheNextChange) {
    Notifier notifier;
    Journal journal;
    const auto kept = std::make_shared<int>(0);
    const GuardPtr a = notifier.registerNotification(calling([kept](const NotifyMsg&) {}), kType);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    {
        const testing_support::FailingAllocator failing(1);
        notifier.deregisterNotification(a->id());
    }
    const GuardPtr c = notifier.registerNotification(journal.writer('c'), kType);
    EXPECT_EQ(kept.use_count(), 1);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "bc");
}

TEST(NotifierDelivery, MemoryFailureCallsNobody) {
    Notifier notifier;
    Journal journal;
    const GuardPtr a = notifier.registerNotification(journal.writer('a'), kType);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    testing_support::failEachAllocation([&] { notifier.issueNotification(kMessage, kType); },
                                        [&] { EXPECT_EQ(journal.calls, ""); });
    EXPECT_EQ(journal.calls, "ab");
}

TEST(NotifierDelivery, DeregisteredMeanwhileIsNotCalled) {
    Notifier notifier;
    Journal journal;
    GuardPtr b;
    const GuardPtr a = notifier.registerNotification(
        calling([&](const NotifyMsg&) { notifier.deregisterNotification(b); }), kType);
    b = notifier.registerNotification(journal.writer('b'), kType);
    const GuardPtr c = notifier.registerNotification(journal.writer('c'), kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "c");
}

TEST(NotifierDelivery, GuardDroppedMeanwhileIsNotCalled) {
    Notifier notifier;
    Journal journal;
    GuardPtr b;
    const GuardPtr a =
        notifier.registerNotification(calling([&](const NotifyMsg&) { b.reset(); }), kType);
    b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "");
}

TEST(NotifierDelivery, DeregisteringAnEarlierOneDoesNotSkipALaterOne) {
    Notifier notifier;
    Journal journal;
    GuardPtr a = notifier.registerNotification(journal.writer('a'), kType);
    const GuardPtr b = notifier.registerNotification(
        calling([&](const NotifyMsg&) { notifier.deregisterNotification(a); }), kType);
    const GuardPtr c = notifier.registerNotification(journal.writer('c'), kType);
    notifier.issueNotification(kMessage, kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "acc");
}

TEST(NotifierDelivery, CallbackMayDeregisterItself) {
    Notifier notifier;
    Journal journal;
    GuardPtr once;
    once = notifier.registerNotification(calling([&](const NotifyMsg&) {
                                             journal.calls += '1';
                                             notifier.deregisterNotification(once);
                                             journal.calls += '!';
                                         }),
                                         kType);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.issueNotification(kMessage, kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "1!bb");
}

TEST(NotifierDelivery, RegisteredMeanwhileWaitsForTheNextNotice) {
    Notifier notifier;
    Journal journal;
    std::vector<GuardPtr> late;
    const GuardPtr a = notifier.registerNotification(
        calling([&](const NotifyMsg&) {
            journal.calls += 'a';
            late.push_back(notifier.registerNotification(journal.writer('z'), kType));
        }),
        kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "aaz");
}

TEST(NotifierDelivery, NestedNoticeIsDeliveredBeforeTheOuterGoesOn) {
    Notifier notifier;
    Journal journal;
    const GuardPtr a =
        notifier.registerNotification(calling([&](const NotifyMsg&) {
                                          journal.calls += '<';
                                          notifier.issueNotification(kMessage, kOther);
                                          journal.calls += '>';
                                      }),
                                      kType);
    const GuardPtr x = notifier.registerNotification(journal.writer('x'), kOther);
    const GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "<x>b");
}

TEST(NotifierDelivery, NestedNoticeReachesWhoWasRegisteredMeanwhile) {
    Notifier notifier;
    Journal journal;
    GuardPtr late;
    const GuardPtr a = notifier.registerNotification(
        calling([&](const NotifyMsg& message) {
            if (!late) {
                late = notifier.registerNotification(journal.writer('z'), kType);
                notifier.issueNotification(message, kType);
            }
        }),
        kType);
    notifier.issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "z");
}

TEST(NotifierDelivery, EndsWhenTheNotifierDies) {
    auto notifier = std::make_unique<Notifier>();
    Journal journal;
    const GuardPtr a = notifier->registerNotification(calling([&](const NotifyMsg&) {
                                                          notifier.reset();
                                                          journal.calls += 'a';
                                                      }),
                                                      kType);
    const GuardPtr b = notifier->registerNotification(journal.writer('b'), kType);
    notifier->issueNotification(kMessage, kType);
    EXPECT_EQ(journal.calls, "a");
    EXPECT_EQ(notifier, nullptr);
}

TEST(NotifierDelivery, ExceptionEndsItAndReachesTheIssuer) {
    Notifier notifier;
    Journal journal;
    const GuardPtr a = notifier.registerNotification(
        calling([](const NotifyMsg&) { throw std::runtime_error("listener"); }), kType);
    GuardPtr b = notifier.registerNotification(journal.writer('b'), kType);
    EXPECT_THROW(notifier.issueNotification(kMessage, kType), std::runtime_error);
    EXPECT_EQ(journal.calls, "");
    EXPECT_THROW(notifier.issueNotification(kMessage, kType), std::runtime_error);
}

TEST(Notifier, KnowsWhetherAnybodyListens) {
    Notifier notifier;
    Journal journal;
    EXPECT_FALSE(notifier.hasListeners(kType));
    GuardPtr guard = notifier.registerNotification(journal.writer('a'), kType);
    EXPECT_TRUE(notifier.hasListeners(kType));
    EXPECT_FALSE(notifier.hasListeners(kOther));
    guard.reset();
    EXPECT_FALSE(notifier.hasListeners(kType));
}

class ViewLike {
public:
    int heard(const NotifyMsg& message) {
        texts += message.text().c_str();
        return 5;
    }
    std::string texts;
};

class ViewLikeHandler : public MethodCallback<ViewLike, NotifyMsg, int> {
public:
    using MethodCallback::MethodCallback;
    bool isViewHandler() const override { return true; }
};

TEST(MethodCallback, CallsTheMemberFunction) {
    ViewLike object;
    MethodCallback<ViewLike, NotifyMsg, int> callback(&object, &ViewLike::heard);
    EXPECT_EQ(callback.call(kMessage), 5);
    EXPECT_EQ(object.texts, "text");
}

TEST(MethodCallback, IsHeardThroughANotifier) {
    Notifier notifier;
    ViewLike object;
    const GuardPtr guard = notifier.registerNotification(
        CallbackPtr(new MethodCallback<ViewLike, NotifyMsg, int>(&object, &ViewLike::heard)),
        kType);
    notifier.issueNotification(NotifyMsg("1 ", nullptr), kType);
    notifier.issueNotification(NotifyMsg("2 ", nullptr), kType);
    EXPECT_EQ(object.texts, "1 2 ");
}

TEST(Notifier, RegistrationsCanBeLookedAtInOrder) {
    Notifier notifier;
    ViewLike object;
    const GuardPtr a = notifier.registerNotification(
        CallbackPtr(new ViewLikeHandler(&object, &ViewLike::heard)), kType);
    const GuardPtr b = notifier.registerNotification(calling([](const NotifyMsg&) {}), kType);
    const GuardPtr c = notifier.registerNotification(calling([](const NotifyMsg&) {}), kOther);
    std::vector<const void*> owners;
    std::string kinds;
    notifier.forEachListener(kType, [&](const Callback& callback) {
        owners.push_back(callback.owner());
        kinds += callback.isViewHandler() ? 'v' : '-';
    });
    EXPECT_EQ(owners, (std::vector<const void*>{&object, nullptr}));
    EXPECT_EQ(kinds, "v-");
    EXPECT_EQ(object.texts, "");
}

}  // namespace
