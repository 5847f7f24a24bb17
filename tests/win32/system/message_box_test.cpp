#include <pty.h>
#include <sys/wait.h>
#include <windows.h>

#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

struct Answer {
    int button = -1;
    std::string shown;
};

/// A message box in a process whose terminal the test plays.
Answer AskOnTerminal(UINT type, const std::string& typed, const char* caption = "标题") {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) _exit(MessageBox(nullptr, "删除订单?", caption, type));
    EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    Answer answer;
    char piece[512];
    for (ssize_t count = 0; (count = read(terminal, piece, sizeof piece)) > 0;) {
        answer.shown.append(piece, static_cast<std::size_t>(count));
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    answer.button = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    close(terminal);
    return answer;
}

bool Shows(const Answer& answer, const char8_t* text) {
    return answer.shown.find(Utf8(text)) != std::string::npos;
}

class MessageBoxWithoutDisplay : public ::testing::Test {
protected:
    Variable display_{"DISPLAY", nullptr};
    Variable wayland_{"WAYLAND_DISPLAY", nullptr};
};

constexpr const char* kEnd = "\x04";  // the terminal's end of input

}  // namespace

TEST_F(MessageBoxWithoutDisplay, AsksOnTheTerminal) {
    static const struct {
        const char* label;
        UINT type;
        const char* typed;
        int button;
    } kRows[] = {
        {"OK by Enter", MB_OK, "\n", IDOK},
        {"OK by letter", MB_OK, "o\n", IDOK},
        {"yes", MB_YESNO, "y\n", IDYES},
        {"yes as a capital", MB_YESNO, "Y\n", IDYES},
        {"no", MB_YESNO, "n\n", IDNO},
        {"Enter takes the first", MB_YESNO, "\n", IDYES},
        {"Enter takes the preselected", MB_YESNO | MB_DEFBUTTON2, "\n", IDNO},
        {"a preselected button too many", MB_YESNO | MB_DEFBUTTON3, "\n", IDNO},
        {"asked again until understood", MB_YESNO, "what\nx\nn\n", IDNO},
        {"cancel", MB_YESNOCANCEL, "c\n", IDCANCEL},
        {"the label itself", MB_OKCANCEL, "\xE5\x8F\x96\xE6\xB6\x88\n", IDCANCEL},
        {"retry", MB_RETRYCANCEL, "r\n", IDRETRY},
        {"ignore", MB_ABORTRETRYIGNORE, "i\n", IDIGNORE},
        {"the input ends: no", MB_YESNO, kEnd, IDNO},
        {"the input ends: cancel", MB_YESNOCANCEL, kEnd, IDCANCEL},
        {"the input ends: abort", MB_ABORTRETRYIGNORE, kEnd, IDABORT},
        {"an icon changes nothing", MB_YESNO | MB_ICONQUESTION | MB_TOPMOST, "y\n", IDYES},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(AskOnTerminal(row.type, row.typed).button, row.button);
    }
}

TEST_F(MessageBoxWithoutDisplay, ShowsTextAndButtonsOnTheTerminal) {
    const Answer answer = AskOnTerminal(MB_YESNOCANCEL | MB_DEFBUTTON2, "\n");
    EXPECT_TRUE(Shows(answer, u8"标题: 删除订单?")) << answer.shown;
    EXPECT_TRUE(Shows(answer, u8"[是 (y) / 否 (N) / 取消 (c)] ")) << answer.shown;
    EXPECT_TRUE(Shows(AskOnTerminal(MB_OK, "\n", nullptr), u8"错误: 删除订单?")) << "the usual caption";
}

TEST_F(MessageBoxWithoutDisplay, AnswersSafelyWhenNobodyIsThere) {
    static const struct {
        UINT type;
        int button;
    } kRows[] = {
        {MB_OK, IDOK},    {MB_OKCANCEL, IDCANCEL},    {MB_ABORTRETRYIGNORE, IDABORT}, {MB_YESNOCANCEL, IDCANCEL},
        {MB_YESNO, IDNO}, {MB_RETRYCANCEL, IDCANCEL},
    };
    for (const auto& row : kRows) {
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(MessageBox(nullptr, "删除订单?", "标题", row.type), row.button) << row.type;
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), Utf8(u8"标题: 删除订单?\n"));
    }
    EXPECT_EQ(MessageBox(nullptr, "x", "y", 9), 0) << "no such buttons";
    EXPECT_EQ(GetLastError(), 87u);
}

namespace {

/// A stand-in for the program that shows windows: writes its arguments down, prints and ends as told.
class MessageBoxInWindow : public ::testing::Test {
protected:
    MessageBoxInWindow() {
        WriteFile(folder_ / "zenity", "#!/bin/sh\nprintf '%s\\n' \"$@\" > " + (folder_ / "arguments") +
                                          "\nprintf '%s' \"$TK_WINDOW_PRINTS\"\nexit $TK_WINDOW_ENDS\n");
        chmod((folder_ / "zenity").c_str(), 0700);
    }

    int Ask(UINT type, const char* ends, const char* prints = "") {
        const Variable code("TK_WINDOW_ENDS", ends);
        const Variable output("TK_WINDOW_PRINTS", prints);
        ::testing::internal::CaptureStderr();
        const int answer = MessageBox(nullptr, "删除<b>订单?", "标题", type);
        shown_ = ::testing::internal::GetCapturedStderr();
        return answer;
    }

    TempFolder folder_;
    std::string shown_;
    Variable path_{"PATH", folder_.Path() + ":/usr/bin:/bin"};
    Variable display_{"DISPLAY", ":99"};
};

}  // namespace

TEST_F(MessageBoxInWindow, PassesTextAndButtonsOn) {
    EXPECT_EQ(Ask(MB_YESNO | MB_DEFBUTTON2, "0"), IDYES);
    EXPECT_EQ(ReadFile(folder_ / "arguments"),
              Utf8(u8"--question\n--no-markup\n--title=标题\n--text=删除<b>订单?\n--ok-label=是\n--cancel-label=否\n"
                   u8"--default-cancel\n"));
    EXPECT_EQ(Ask(MB_ABORTRETRYIGNORE, "0"), IDRETRY);
    EXPECT_EQ(
        ReadFile(folder_ / "arguments"),
        Utf8(u8"--question\n--no-markup\n--title=标题\n--text=删除<b>订单?\n--ok-label=重试\n--cancel-label=中止\n"
             u8"--extra-button=忽略\n--default-cancel\n"));
    EXPECT_EQ(Ask(MB_OK | MB_ICONERROR, "0"), IDOK);
    EXPECT_EQ(ReadFile(folder_ / "arguments"),
              Utf8(u8"--error\n--no-markup\n--title=标题\n--text=删除<b>订单?\n--ok-label=确定\n"));
    EXPECT_EQ(shown_, "");
}

TEST_F(MessageBoxInWindow, UnderstandsTheAnswer) {
    static const struct {
        const char* label;
        UINT type;
        const char* ends;
        const char8_t* prints;
        int button;
    } kRows[] = {
        {"no", MB_YESNO, "1", u8"", IDNO},
        {"closed", MB_YESNOCANCEL, "1", u8"", IDCANCEL},
        {"the extra button", MB_YESNOCANCEL, "1", u8"否\n", IDNO},
        {"closed by its frame", MB_ABORTRETRYIGNORE, "1", u8"", IDABORT},
        {"ignore", MB_ABORTRETRYIGNORE, "1", u8"忽略\n", IDIGNORE},
        {"a notice closed by its frame", MB_OK, "1", u8"", IDOK},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Ask(row.type, row.ends, Utf8(row.prints)), row.button);
    }
}

TEST_F(MessageBoxInWindow, FallsBackWhenNoWindowCanBeShown) {
    EXPECT_EQ(Ask(MB_YESNO, "5"), IDNO);
    EXPECT_EQ(shown_, Utf8(u8"标题: 删除<b>订单?\n"));
    const Variable nowhere("PATH", "/nonexistent");
    EXPECT_EQ(Ask(MB_YESNO, "0"), IDNO);
    EXPECT_EQ(shown_, Utf8(u8"标题: 删除<b>订单?\n"));
}
