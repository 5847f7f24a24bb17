#include "win32/system/message_box.h"

#include <unistd.h>

#include <algorithm>

#include "tkwin32/message_box.h"
#include "tkwin32/text.h"
#include "win32/system/file_names.h"
#include "winbase.h"

namespace tk::system {
namespace {

constexpr Button kOk = {IDOK, u"确定", 'O'};
constexpr Button kCancel = {IDCANCEL, u"取消", 'C'};
constexpr Button kYes = {IDYES, u"是", 'Y'};
constexpr Button kNo = {IDNO, u"否", 'N'};
constexpr Button kAbort = {IDABORT, u"中止", 'A'};
constexpr Button kRetry = {IDRETRY, u"重试", 'R'};
constexpr Button kIgnore = {IDIGNORE, u"忽略", 'I'};

constexpr struct ButtonSet {
    UINT type;
    int safeAnswer;
    std::size_t count;
    Button buttons[3];
} kButtonSets[] = {
    {MB_OK, IDOK, 1, {kOk}},
    {MB_OKCANCEL, IDCANCEL, 2, {kOk, kCancel}},
    {MB_ABORTRETRYIGNORE, IDABORT, 3, {kAbort, kRetry, kIgnore}},
    {MB_YESNOCANCEL, IDCANCEL, 3, {kYes, kNo, kCancel}},
    {MB_YESNO, IDNO, 2, {kYes, kNo}},
    {MB_RETRYCANCEL, IDCANCEL, 2, {kRetry, kCancel}},
};

/// Nobody to ask: the text is not lost, and the answer does least.
int AnswerAlone(const Question& question) {
    const std::string line = question.caption + ": " + question.text + "\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
    return question.safeAnswer;
}

}  // namespace
}  // namespace tk::system

int MessageBoxA(HWND, LPCSTR lpText, LPCSTR lpCaption, UINT uType) {
    using namespace tk::system;
    const auto set = std::ranges::find(kButtonSets, uType & MB_TYPEMASK, &ButtonSet::type);
    if (set == std::end(kButtonSets)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    Question question;
    question.text = lpText != nullptr ? tk::text::GbkToUtf8(lpText) : std::string();
    question.caption = lpCaption != nullptr ? tk::text::GbkToUtf8(lpCaption) : tk::text::Utf16ToUtf8(u"错误");
    question.icon = uType & MB_ICONMASK;
    question.buttons = std::span(set->buttons, set->count);
    question.preselected = std::min<std::size_t>((uType & MB_DEFMASK) / MB_DEFBUTTON2, set->count - 1);
    question.safeAnswer = set->safeAnswer;
    if (const auto answer = AskInWindow(question)) return *answer;
    if (const auto answer = AskOnTerminal(question)) return *answer;
    return AnswerAlone(question);
}
