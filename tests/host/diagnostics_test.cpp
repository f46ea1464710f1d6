#include <vekdb/host/diagnostics.h>

#include "testing/capture_diagnostics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing_support::CaptureDiagnostics;
using Texts = std::vector<std::string>;

TEST(Diagnostics, DebugTextArrivesAsFormatted) {
    const CaptureDiagnostics said;
    debug_printf("row %d of \"%s\"\n", 7, "A001");
    EXPECT_EQ(said.debugged, Texts{"row 7 of \"A001\"\n"});
    EXPECT_EQ(said.logged, Texts{});
    EXPECT_EQ(said.splatted, Texts{});
}

TEST(Diagnostics, LogBothReachesDebugOutputAndLog) {
    const CaptureDiagnostics said;
    LogBoth("two %s\n", "places");
    EXPECT_EQ(said.debugged, Texts{"two places\n"});
    EXPECT_EQ(said.logged, Texts{"two places\n"});
    EXPECT_EQ(said.messages, Texts{"two places\n"});
}

TEST(Diagnostics, SplatTextIsNotAFormat) {
    const CaptureDiagnostics said;
    vek_splat("100%s %n sure\n");
    EXPECT_EQ(said.splatted, Texts{"100%s %n sure\n"});
    EXPECT_EQ(said.debugged, Texts{});
}

TEST(Diagnostics, NullSplatIsEmpty) {
    const CaptureDiagnostics said;
    vek_splat(nullptr);
    EXPECT_EQ(said.splatted, Texts{""});
}

TEST(Diagnostics, LongMessagesArriveWhole) {
    const CaptureDiagnostics said;
    Texts expected;
    for (const int length : {510, 511, 512, 513, 5000}) {
        expected.emplace_back(static_cast<std::size_t>(length), 'x');
        debug_printf("%s", expected.back().c_str());
    }
    EXPECT_EQ(said.debugged, expected);
}

TEST(Diagnostics, MessagesKeepTheirOrder) {
    const CaptureDiagnostics said;
    vek_splat("a");
    debug_printf("b");
    LogBoth("c");
    EXPECT_EQ(said.messages, (Texts{"a", "b", "c"}));
}

TEST(Diagnostics, InnerCaptureGivesTheOuterOneBack) {
    const CaptureDiagnostics outer;
    {
        const CaptureDiagnostics inner;
        debug_printf("in");
        EXPECT_EQ(inner.messages, Texts{"in"});
    }
    debug_printf("out");
    EXPECT_EQ(outer.messages, Texts{"out"});
}

TEST(Diagnostics, BuiltInSinkPrintsEachMessageOnceOnStandardError) {
    iDiagnosticSink* before = setDiagnosticSink(nullptr);
    testing::internal::CaptureStderr();
    debug_printf("one %d\n", 1);
    LogBoth("two %d\n", 2);
    vek_splat("three\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "one 1\ntwo 2\nthree\n");
    setDiagnosticSink(before);
}

}  // namespace
