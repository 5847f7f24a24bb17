// Composing a connection: the question, whoever answers it, and the trial.
#include <msdasc.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fstream>

#include "driver/driver_fixture.h"
#include "support/environment.h"
#include "support/temporary_folder.h"
#include "tkkernel/platform.h"

namespace tk::test {
namespace {

/// A stand-in for the program that shows windows prints a line and ends as told.
class DataLink : public DriverTest {
protected:
    DataLink() {
        const std::string program = folder_.File("zenity");
        std::ofstream(program) << "#!/bin/sh\nprintf '%s\\n' \"$@\" > " << folder_.File("arguments")
                               << "\nprintf '%s' \"$TK_WINDOW_PRINTS\"\nexit $TK_WINDOW_ENDS\n";
        chmod(program.c_str(), 0700);
    }

    CString Ask(const char* prints, const char* ends = "0") {
        const Alone alone;
        const Variable display("DISPLAY", ":99");
        const Variable path("PATH", (folder_.Path() + ":/usr/bin:/bin").c_str());
        const Variable output("TK_WINDOW_PRINTS", prints);
        const Variable code("TK_WINDOW_ENDS", ends);
        return GetSystemDataSource();
    }

    TemporaryFolder folder_;
};

TEST_F(DataLink, AnAnswerIsTriedAndGivenBackWhole) {
    connections_->Give(connection_.Get());
    EXPECT_STREQ(Ask("DSN=stock;UID=sa;PWD=pw\n"), "DSN=stock;UID=sa;PWD=pw");
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.call 10 (BSTR \"DSN=stock;UID=sa;PWD=pw\")"));
    EXPECT_EQ(connection_->References(), 1u) << "the trial is over";
}

TEST_F(DataLink, AChineseAnswerComesInTheCodePage) {
    connections_->Give(connection_.Get());
    EXPECT_STREQ(Ask("Database=\xE5\xBA\x93.db\n"), "Database=库.db");
}

TEST_F(DataLink, NoAnswerTouchesNothing) {
    static const struct {
        const char* label;
        const char* prints;
        const char* ends;
    } kRows[] = {{"cancelled", "", "1"},
                 {"empty", "\n", "0"},
                 {"no window after all", "", "5"},
                 {"cancelled after typing", "DSN=x\n", "1"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(Ask(row.prints, row.ends), "");
    }
    const Alone alone;
    EXPECT_STREQ(GetSystemDataSource(), "");
    CTDatabase database;
    EXPECT_EQ(database.Open(), 0);
    EXPECT_EQ(connections_->Created(), 0);
    EXPECT_EQ(ErrorOf(database), "");
}

TEST_F(DataLink, AnAnswerThatCannotBeConnectedIsNone) {
    connections_->Give(connection_.Get());
    connection_->On(Call(10)).Fails("没有此数据源");
    EXPECT_STREQ(Ask("DSN=none\n"), "");
    connections_->Refuse(E_ACCESSDENIED);
    EXPECT_STREQ(Ask("DSN=none\n"), "");
    connections_->Give(connection_.Get());
    connection_->On(Call(10)) = Script();
    connection_->On(Call(10)).FailsWith(S_FALSE);
    EXPECT_STREQ(Ask("DSN=none\n"), "") << "only a plain success counts";
    EXPECT_EQ(connection_->References(), 1u);
}

TEST_F(DataLink, TheQuestionIsAskedInChinese) {
    Ask("", "1");
    std::ifstream arguments(folder_.File("arguments"));
    std::string line;
    ASSERT_TRUE(std::getline(arguments, line));
    EXPECT_EQ(line, "--entry");
    ASSERT_TRUE(std::getline(arguments, line));
    EXPECT_EQ(line, "--title=\xE6\x95\xB0\xE6\x8D\xAE\xE9\x93\xBE\xE6\x8E\xA5");
}

TEST_F(DataLink, TheTerminalAnswersWhereThereIsNoWindow) {
    connections_->Give(connection_.Get());
    const Variable display("DISPLAY", nullptr);
    const Variable wayland("WAYLAND_DISPLAY", nullptr);
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) _exit(GetSystemDataSource() == "DSN=typed" ? 0 : 1);
    ASSERT_EQ(write(terminal, "DSN=typed\n", 10), 10);
    char piece[512];
    while (read(terminal, piece, sizeof(piece)) > 0) {}
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    close(terminal);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(DataLink, OpenWithoutArgumentsOpensTheAnswer) {
    const Alone alone;
    const Variable display("DISPLAY", ":99");
    const Variable path("PATH", (folder_.Path() + ":/usr/bin:/bin").c_str());
    const Variable output("TK_WINDOW_PRINTS", "DSN=stock\n");
    const Variable code("TK_WINDOW_ENDS", "0");
    auto trial = Make("trial");
    connections_->Give(trial.Get());
    connections_->Give(connection_.Get());
    connection_->On(Get(500)).Returns(Object(MakeProperties({}).Get()));
    CTDatabase database;
    EXPECT_EQ(database.Open(), 1) << ErrorOf(database);
    EXPECT_THAT(journal_.Take(),
                ::testing::Contains("connection.call 10 (BSTR \"DSN=stock\", BSTR null, BSTR null, I4 -1)"));
}

TEST_F(DataLink, PasswordsAreLeftOutOnRequest) {
    static const struct {
        const char16_t* connection;
        const char16_t* shown;
    } kRows[] = {
        {u"DSN=stock;UID=sa;PWD=pw", u"DSN=stock;UID=sa;"},
        {u"PWD=pw;DSN=stock", u"DSN=stock"},
        {u" password = 'a;b' ;DSN=stock;", u"DSN=stock;"},
        {u"PWD={a;b};X={PWD=1;};Y=\"PWD=2;\"", u"X={PWD=1;};Y=\"PWD=2;\""},
        {u"DSN=stock", u"DSN=stock"},
        {u"", u""},
    };
    void* object = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_MSDAINITIALIZE, nullptr, CLSCTX_INPROC_SERVER, IID_IDataInitialize, &object),
              S_OK);
    Held<IDataInitialize> initialize(static_cast<IDataInitialize*>(object));
    for (const auto& row : kRows) {
        IUnknown* made = nullptr;
        ASSERT_EQ(initialize->GetDataSource(nullptr, CLSCTX_INPROC_SERVER, row.connection, IID_IDBProperties, &made),
                  S_OK);
        Held<IUnknown> source(made);
        LPOLESTR text = nullptr;
        ASSERT_EQ(initialize->GetInitializationString(source.Get(), 0, &text), S_OK);
        EXPECT_EQ(std::u16string(text), row.shown);
        CoTaskMemFree(text);
        ASSERT_EQ(initialize->GetInitializationString(source.Get(), 1, &text), S_OK);
        EXPECT_EQ(std::u16string(text), row.connection);
        CoTaskMemFree(text);
    }
    LPOLESTR text = nullptr;
    EXPECT_EQ(initialize->GetInitializationString(records_.Get(), 1, &text), E_NOINTERFACE) << "somebody else's";
    EXPECT_EQ(initialize->GetInitializationString(nullptr, 1, &text), E_POINTER);
}

}  // namespace
}  // namespace tk::test
