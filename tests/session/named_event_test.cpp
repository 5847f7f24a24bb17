#include <gtest/gtest.h>

#include "tests/session/sync_names.h"
#include "tests/support/child_process.h"
#include "tkkernel/sync.h"

using namespace tk::test;

namespace {

bool Begins(const CString& text, const char* with) {
    return std::string(text).starts_with(with);
}

std::string Repeated(const char* text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

}  // namespace

TEST(NamedEvent, StartsWithoutNameHandleOrError) {
    CTEvent event;
    EXPECT_STREQ(event.GetEventName(), "");
    EXPECT_STREQ(event.GetLastErrorString(), "");
    EXPECT_FALSE(event.CloseEvent());
}

TEST(NamedEvent, LetsOneWaiterThroughForEachTimeItIsSet) {
    const std::string name = OwnName("share");
    CTEvent one;
    CTEvent two;
    ASSERT_TRUE(one.OpenEventA(name.c_str()));
    ASSERT_TRUE(two.OpenEventA(name.c_str()));
    EXPECT_STREQ(two.GetEventName(), name.c_str());
    EXPECT_FALSE(two.WaitForEvent(0)) << "made not signalled";
    EXPECT_TRUE(one.SetEvent());
    EXPECT_TRUE(two.WaitForEvent(5000));
    EXPECT_FALSE(two.WaitForEvent(10)) << "the wait took the signal";
    EXPECT_TRUE(one.SetEvent());
    EXPECT_TRUE(one.SetEvent()) << "set already";
    EXPECT_TRUE(one.WaitForEvent(0));
    EXPECT_FALSE(one.WaitForEvent(0)) << "two in a row are one signal";
}

TEST(NamedEvent, IsNotSignalledAfterReset) {
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA(OwnName("reset").c_str()));
    ASSERT_TRUE(event.SetEvent());
    EXPECT_TRUE(event.ResetEvent());
    EXPECT_FALSE(event.WaitForEvent(0));
}

TEST(NamedEvent, WithoutANameIsItsOwn) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        SCOPED_TRACE(name == nullptr ? "null" : "empty");
        CTEvent one;
        CTEvent two;
        ASSERT_TRUE(one.OpenEventA(name));
        ASSERT_TRUE(two.OpenEventA(name));
        EXPECT_STREQ(one.GetEventName(), "");
        EXPECT_TRUE(one.SetEvent());
        EXPECT_FALSE(two.WaitForEvent(0));
        EXPECT_TRUE(one.WaitForEvent(0));
    }
}

TEST(NamedEvent, SaysWhyItCannotBeSet) {
    CTEvent event;
    EXPECT_FALSE(event.SetEvent());
    EXPECT_TRUE(Begins(event.GetLastErrorString(), "错误[0x00000006]:")) << event.GetLastErrorString();
    ASSERT_TRUE(event.OpenEventA(OwnName("closed").c_str()));
    EXPECT_TRUE(event.CloseEvent());
    EXPECT_FALSE(event.CloseEvent()) << "the handle keeps its value and names nothing any more";
    EXPECT_FALSE(event.ResetEvent());
    EXPECT_TRUE(Begins(event.GetLastErrorString(), "错误[0x00000006]:")) << event.GetLastErrorString();
}

TEST(NamedEvent, KeepsTheLastErrorWhenLaterCallsSucceed) {
    CTEvent event;
    EXPECT_FALSE(event.SetEvent());
    ASSERT_TRUE(event.OpenEventA(OwnName("later").c_str()));
    EXPECT_TRUE(event.SetEvent());
    EXPECT_TRUE(Begins(event.GetLastErrorString(), "错误[0x00000006]:"));
}

TEST(NamedEvent, CountsAFailedWaitAsPassed) {
    CTEvent event;
    EXPECT_TRUE(event.WaitForEvent(0));
    EXPECT_STREQ(event.GetLastErrorString(), "") << "a wait sets no text";
}

TEST(NamedEvent, LeavesTheFirstHandleOpenWhenTheNameExists) {
    const std::string name = OwnName("overwritten");
    {
        CTEvent made;
        ASSERT_TRUE(made.OpenEventA(name.c_str()));
    }
    EXPECT_FALSE(EventExists(name)) << "one handle, closed with its object";
    {
        CTEvent made;
        CTEvent opened;
        ASSERT_TRUE(made.OpenEventA(name.c_str()));
        ASSERT_TRUE(opened.OpenEventA(name.c_str()));
    }
    EXPECT_TRUE(EventExists(name)) << "the handle that was overwritten";
}

TEST(NamedEvent, SharesItsHandleWithCopies) {
    const std::string name = OwnName("copies");
    CTEvent copy;
    {
        CTEvent event;
        ASSERT_TRUE(event.OpenEventA(name.c_str()));
        EXPECT_FALSE(CTEvent().SetEvent());
        copy = event;
        const CTEvent third(event);
        EXPECT_STREQ(copy.GetEventName(), name.c_str());
        ASSERT_TRUE(copy.SetEvent());
        EXPECT_TRUE(event.WaitForEvent(0));
    }
    EXPECT_FALSE(copy.SetEvent()) << "closed with the first of the three";
    EXPECT_FALSE(EventExists(name));
}

TEST(NamedEvent, FailsOnTheNameOfAnotherKind) {
    const std::string name = OwnName("kind");
    CTSemaphore semaphore;
    ASSERT_TRUE(semaphore.OpenSemaphoreA(name.c_str()));
    CTEvent event;
    EXPECT_FALSE(event.OpenEventA(name.c_str()));
    EXPECT_TRUE(Begins(event.GetLastErrorString(), "错误[0x00000006]:")) << event.GetLastErrorString();
    EXPECT_STREQ(event.GetEventName(), name.c_str()) << "the name is that of the last try";
    semaphore.CloseSemaphore();
}

TEST(NamedEvent, TakesNamesAsThePlatformDoes) {
    const std::string own = OwnName("");
    const std::string longest(259 - own.size(), 'n');
    static const struct {
        const char* label;
        std::string name;
        const char* error;  // null: it opens
    } kRows[] = {
        {"Chinese", own + "库存", nullptr},
        {"slashes", own + "a/b/c", nullptr},
        {"blanks", own + "  two  ", nullptr},
        {"259 characters", own + longest, nullptr},  // Wine stops here; one more is allowed elsewhere
        {"200 characters of two bytes", own + Repeated("库", 200), nullptr},
        {"300 characters of two bytes", own + Repeated("库", 300), "错误[0x000000CE]:"},
        {"261 characters", own + longest + "nn", "错误[0x000000CE]:"},
        {"a backslash inside", own + "a\\b", "错误[0x00000003]:"},
        {"a backslash at the end", own + "a\\", "错误[0x00000003]:"},
        {"in the local space", "Local\\" + own + "l", nullptr},
        {"in the global space", "Global\\" + own + "g", nullptr},
        {"a backslash behind the space", "Local\\" + own + "a\\b", "错误[0x00000003]:"},
        {"a second byte like a backslash", own + "誠", nullptr},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CTEvent event;
        EXPECT_EQ(event.OpenEventA(row.name.c_str()), row.error == nullptr ? TRUE : FALSE);
        if (row.error != nullptr) {
            EXPECT_TRUE(Begins(event.GetLastErrorString(), row.error)) << event.GetLastErrorString();
            continue;
        }
        CTEvent again;
        ASSERT_TRUE(again.OpenEventA(row.name.c_str()));
        EXPECT_TRUE(event.SetEvent());
        EXPECT_TRUE(again.WaitForEvent(0)) << "the same object";
    }
}

TEST(NamedEvent, TellsNamesApartByCase) {
    const std::string name = OwnName("case");
    CTEvent lower;
    CTEvent upper;
    ASSERT_TRUE(lower.OpenEventA((name + "a").c_str()));
    ASSERT_TRUE(upper.OpenEventA((name + "A").c_str()));
    EXPECT_TRUE(lower.SetEvent());
    EXPECT_FALSE(upper.WaitForEvent(0));
}

TEST(NamedEvent, CrossesProcesses) {
    const std::string there = OwnName("到那边");
    const std::string back = OwnName("back");
    CTEvent go;
    CTEvent done;
    ASSERT_TRUE(go.OpenEventA(there.c_str()));
    ASSERT_TRUE(done.OpenEventA(back.c_str()));
    ChildProcess child("answer-event");
    child.Say(there);
    child.Say(back);
    ASSERT_EQ(child.Hear(), "ready");
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(go.SetEvent());
        ASSERT_TRUE(done.WaitForEvent(20000)) << "round " << i;
    }
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_FALSE(done.WaitForEvent(0));
}

TEST(NamedEvent, EndsWithTheProcessThatHasItAlone) {
    const std::string name = OwnName("killed");
    ChildProcess child("hold-event");
    child.Say(name);
    ASSERT_EQ(child.Hear(), "ready");
    EXPECT_TRUE(EventExists(name));
    child.Kill();
    EXPECT_FALSE(EventExists(name));
    CTEvent event;
    EXPECT_TRUE(event.OpenEventA(name.c_str()));
    EXPECT_FALSE(event.WaitForEvent(0)) << "a new one";
}

TEST(NamedEvent, OutlivesTheProcessThatMadeIt) {
    const std::string name = OwnName("outlives");
    ChildProcess child("hold-event");
    child.Say(name);
    ASSERT_EQ(child.Hear(), "ready");
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA(name.c_str()));
    ASSERT_TRUE(event.SetEvent());
    child.Kill();
    EXPECT_TRUE(EventExists(name));
    EXPECT_TRUE(event.WaitForEvent(0)) << "the signal is still there";
}

TEST(NamedEvent, LosesNoSignalToAWaiterThatIsKilled) {
    const std::string name = OwnName("waiter");
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA(name.c_str()));
    ChildProcess child("wait-event");
    child.Say(name);
    ASSERT_EQ(child.Hear(), "ready");
    child.Kill();  // before it waits, or while it does
    EXPECT_TRUE(event.SetEvent());
    EXPECT_TRUE(event.WaitForEvent(20000));
    EXPECT_FALSE(event.WaitForEvent(0));
}
