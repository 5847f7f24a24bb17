#include <sys/stat.h>

#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

using Names = KernelObjects;

/// Makes or opens an object of a kind.
struct KindRow {
    const char* label;
    HANDLE (*make)(const char* name);
    HANDLE (*open)(const char* name);
};

constexpr KindRow kKinds[] = {
    {"event", [](const char* name) { return CreateEventA(nullptr, FALSE, FALSE, name); },
     [](const char* name) { return OpenEventA(EVENT_ALL_ACCESS, FALSE, name); }},
    {"semaphore", [](const char* name) { return CreateSemaphoreA(nullptr, 0, 1, name); },
     [](const char* name) { return OpenSemaphoreA(SEMAPHORE_ALL_ACCESS, FALSE, name); }},
    {"mutex", [](const char* name) { return CreateMutexA(nullptr, FALSE, name); },
     [](const char* name) { return OpenMutexA(MUTEX_ALL_ACCESS, FALSE, name); }},
    {"timer", [](const char* name) { return CreateWaitableTimerA(nullptr, FALSE, name); },
     [](const char* name) { return OpenWaitableTimerA(TIMER_ALL_ACCESS, FALSE, name); }},
};

}  // namespace

TEST_F(Names, AreOneSpaceForAllKinds) {
    for (const KindRow& owner : kKinds) {
        SCOPED_TRACE(owner.label);
        EXPECT_EQ(owner.open("Stock"), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
        const Handle first = owner.make("Stock");
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(GetLastError(), 0u);
        for (const KindRow& other : kKinds) {
            SCOPED_TRACE(other.label);
            const bool same = other.label == owner.label;
            const Handle made = other.make("Stock");
            EXPECT_EQ(made != nullptr, same);
            EXPECT_EQ(GetLastError(), same ? ERROR_ALREADY_EXISTS : ERROR_INVALID_HANDLE);
            SetLastError(77);
            const Handle opened = other.open("Stock");
            EXPECT_EQ(opened != nullptr, same);
            EXPECT_EQ(GetLastError(), same ? 77u : ERROR_INVALID_HANDLE) << "opening leaves the code alone";
        }
    }
}

TEST_F(Names, FollowThePlatformsRules) {
    static const struct {
        const char* label;
        std::string name;
        DWORD error;
    } kRows[] = {
        {"plain", "Stock", 0},
        {"blanks and signs", " a/b:c*d?e\"<>|\t\x01 ", 0},
        {"slashes", "/stock/ready/../..", 0},
        {"points", "..", 0},
        {"Chinese", "库存.就绪", 0},
        {"a second byte like a backslash", "誠信", 0},
        {"the longest", std::string(260, 'n'), 0},
        {"the longest in Chinese",
         [] {
             std::string text;
             for (int i = 0; i < 260; ++i)
                 text += "库";
             return text;
         }(),
         0},
        {"one too many", std::string(261, 'n'), 206},
        {"far too many", std::string(100'000, 'n'), 206},
        {"one too many in Chinese",
         [] {
             std::string text;
             for (int i = 0; i < 261; ++i)
                 text += "库";
             return text;
         }(),
         206},
        {"a backslash inside", "a\\b", 3},
        {"a backslash at the end", "a\\", 3},
        {"a backslash at the start", "\\a", 161},
        {"backslashes alone", "\\\\", 161},
        {"local", "Local\\a", 0},
        {"global", "Global\\a", 0},
        {"local and more", "Local\\a\\b", 3},
        {"local and a backslash", "Local\\\\a", 161},
        {"another space", "local\\a", 3},
        {"nothing in the local space", "Local\\", 6},
        {"the local space itself", "Local", 6},
        {"the global space itself", "Global", 6},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Handle made = CreateEventA(nullptr, TRUE, TRUE, row.name.c_str());
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(made != nullptr, row.error == 0);
        SetLastError(0);
        const Handle opened = OpenEventA(EVENT_ALL_ACCESS, FALSE, row.name.c_str());
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(opened != nullptr, row.error == 0);
    }
}

TEST_F(Names, MeanTheSameInTheLocalAndTheGlobalSpace) {
    const Handle plain = ManualEvent("Stock");
    const Handle local = ManualEvent("Local\\Stock");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    const Handle global = ManualEvent("Global\\Stock");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    SetEvent(global);
    EXPECT_EQ(WaitForSingleObject(plain, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(local, 0), WAIT_OBJECT_0);
}

TEST_F(Names, AreTheSameInBothCharacterForms) {
    const Handle narrow = ManualEvent("库存");
    const Handle wide = CreateEventW(nullptr, TRUE, FALSE, u"库存");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    const Handle opened = OpenEventW(SYNCHRONIZE, FALSE, u"库存");
    EXPECT_NE(opened, nullptr);
    const Handle semaphore = CreateSemaphoreW(nullptr, 1, 1, u"量");
    EXPECT_NE(Handle(OpenSemaphoreW(SYNCHRONIZE, FALSE, u"量")), nullptr);
    EXPECT_NE(Handle(OpenSemaphoreA(SYNCHRONIZE, FALSE, "量")), nullptr);
    const Handle mutex = CreateMutexW(nullptr, FALSE, u"锁");
    EXPECT_NE(Handle(OpenMutexW(SYNCHRONIZE, FALSE, u"锁")), nullptr);
    const Handle timer = CreateWaitableTimerW(nullptr, FALSE, u"晚");
    EXPECT_NE(Handle(OpenWaitableTimerW(SYNCHRONIZE, FALSE, u"晚")), nullptr);
}

TEST_F(Names, AreToldApartByCaseAndLength) {
    const Handle one = AutoEvent("Stock");
    for (const char* other : {"stock", "STOCK", "Stock ", "Stoc", "Stockk"}) {
        EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, other), nullptr) << other;
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    }
}

TEST_F(Names, OpenNothingWithoutAName) {
    EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, ""), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(Names, GiveTheRightsAskedFor) {
    const Handle event = AutoEvent("Stock");
    static const struct {
        const char* label;
        DWORD access;
        bool sets;
        bool waits;
    } kRows[] = {
        {"all", EVENT_ALL_ACCESS, true, true},        {"waiting", SYNCHRONIZE, false, true},
        {"setting", EVENT_MODIFY_STATE, true, false}, {"as much as there is", MAXIMUM_ALLOWED, true, true},
        {"reading", GENERIC_READ, false, false},      {"writing", GENERIC_WRITE, true, false},
        {"running", GENERIC_EXECUTE, false, true},    {"everything", GENERIC_ALL, true, true},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Handle opened = OpenEventA(row.access, FALSE, "Stock");
        ASSERT_NE(opened, nullptr);
        EXPECT_EQ(SetEvent(opened) != FALSE, row.sets);
        EXPECT_EQ(ResetEvent(opened) != FALSE, row.sets);
        EXPECT_EQ(WaitForSingleObject(opened, 0) != WAIT_FAILED, row.waits);
    }
    EXPECT_EQ(OpenEventA(0, FALSE, "Stock"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(Names, EndWithTheLastHandle) {
    Handle one = AutoEvent("Stock");
    Handle two = OpenEventA(EVENT_ALL_ACCESS, FALSE, "Stock");
    EXPECT_EQ(EntriesIn(Folder()), 1);
    SetEvent(one);
    one = nullptr;
    EXPECT_NE(Handle(OpenEventA(SYNCHRONIZE, FALSE, "Stock")), nullptr) << "one handle is left";
    two = nullptr;
    EXPECT_EQ(EntriesIn(Folder()), 0);
    EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, "Stock"), nullptr);
    const Handle anew = AutoEvent("Stock");
    EXPECT_EQ(WaitForSingleObject(anew, 0), WAIT_TIMEOUT) << "nothing of the old one";
}

TEST_F(Names, ComeByTheThousand) {
    std::vector<Handle> handles;
    for (int i = 0; i < 5000; ++i) {
        handles.push_back(CreateSemaphoreA(nullptr, i % 7, 10, ("Stock." + std::to_string(i)).c_str()));
        ASSERT_NE(handles.back(), nullptr) << i << ": " << GetLastError();
        ASSERT_EQ(GetLastError(), 0u);
    }
    for (int i = 0; i < 5000; i += 13) {
        const Handle again = OpenSemaphoreA(SEMAPHORE_ALL_ACCESS, FALSE, ("Stock." + std::to_string(i)).c_str());
        ASSERT_NE(again, nullptr);
        LONG count = -1;
        ASSERT_TRUE(ReleaseSemaphore(again, 1, &count));
        EXPECT_EQ(count, i % 7);
    }
    EXPECT_EQ(EntriesIn(Folder()), 1) << "all in one file";
    int descriptors = EntriesIn("/proc/self/fd");
    EXPECT_LT(descriptors, 100) << "and none of them costs a descriptor";
}

TEST_F(Names, SurviveAFullFileSystem) {
    Faults& faults = TheFaults();
    faults.fullAfter = 0;
    EXPECT_EQ(AutoEvent("Stock"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NO_SYSTEM_RESOURCES);
    faults.fullAfter = 1;
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "the file is there, its first object has no room";
    EXPECT_EQ(GetLastError(), ERROR_NO_SYSTEM_RESOURCES);
    faults.fullAfter = 2;
    std::vector<Handle> handles;
    for (Handle handle = AutoEvent("Stock.0"); handle != nullptr;
         handle = AutoEvent(("Stock." + std::to_string(handles.size())).c_str())) {
        handles.push_back(std::move(handle));
        ASSERT_LT(handles.size(), 1000u);
    }
    EXPECT_EQ(GetLastError(), ERROR_NO_SYSTEM_RESOURCES);
    ASSERT_GE(handles.size(), 10u);
    SetEvent(handles[0]);
    EXPECT_EQ(WaitForSingleObject(handles[0], 10), WAIT_OBJECT_0) << "what was there works";
    EXPECT_EQ(WaitForSingleObject(handles[0], 10), WAIT_FAILED) << "no room for a record of the wait";
    EXPECT_EQ(GetLastError(), ERROR_NO_SYSTEM_RESOURCES);
    EXPECT_EQ(WaitForSingleObject(handles[0], 0), WAIT_TIMEOUT);
    const Handle unnamed = AutoEvent();
    EXPECT_EQ(WaitForSingleObject(unnamed, 1), WAIT_TIMEOUT) << "unnamed objects are elsewhere";
    faults.fullAfter = -1;
    EXPECT_NE(Handle(AutoEvent("Stock.More")), nullptr) << "room again";
    EXPECT_EQ(WaitForSingleObject(handles[0], 1), WAIT_TIMEOUT);
}

TEST_F(Names, FailWithoutAFolder) {
    const Variable nowhere("TKKERNEL_OBJECTS", "/nowhere/at/all");
    EXPECT_EQ(AutoEvent("Stock"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, "Stock"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_NE(Handle(AutoEvent()), nullptr);
}

TEST_F(Names, DoNotTrustAFileOfOthers) {
    const std::string path = Folder() + "/tkkernel-objects-" + std::to_string(geteuid()) + ".1";
    std::ofstream(path) << "";
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "everybody may write there";
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    ASSERT_EQ(unlink(path.c_str()), 0);
    ASSERT_EQ(symlink("/dev/null", path.c_str()), 0);
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "a link leads elsewhere";
    ASSERT_EQ(unlink(path.c_str()), 0);
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "a folder";
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    ASSERT_EQ(rmdir(path.c_str()), 0);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "a pipe";
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    ASSERT_EQ(unlink(path.c_str()), 0);
    std::ofstream(path) << std::string(8192, 'x');
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(AutoEvent("Stock"), nullptr) << "something else";
    EXPECT_EQ(GetLastError(), ERROR_BAD_FORMAT);
    ASSERT_EQ(unlink(path.c_str()), 0);
    std::ofstream(path) << "";
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    EXPECT_NE(Handle(AutoEvent("Stock")), nullptr) << "an empty one is one that was never filled";
}

TEST_F(Names, AreOpenedAndClosedByManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 500; ++round) {
                const Handle shared = AutoEvent("Stock.All");
                const Handle own = AutoEvent(("Stock." + std::to_string(i)).c_str());
                if (shared == nullptr || own == nullptr || !SetEvent(shared)) ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
}
