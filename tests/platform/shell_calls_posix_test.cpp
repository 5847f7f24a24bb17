// What objects, dialogs, menus and ports are asked for, call by call, and what is made of every answer: this program
// answers in the platform's place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxwin.h>
#include <atlbase.h>
#include <dlfcn.h>
#include <ole2.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "support/noted_calls.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The answers, and the questions in order.
struct Shell : tk::test::NotedCalls {
    IUnknown* object = nullptr;
    HRESULT created = S_OK;
    SCODE driverCode = E_FAIL;
    LPITEMIDLIST folder = nullptr;
    BOOL isPath = TRUE;
    HMENU menu = nullptr;
    HMENU subMenu = nullptr;
    std::vector<std::string> ports;
    LRESULT items = 0;  // in the list
};
Shell* shell = nullptr;

template <typename Handle>
Handle Numbered(int number) {
    return reinterpret_cast<Handle>(static_cast<LONG_PTR>(number));
}
template <typename Handle>
long long NumberOf(Handle handle) {
    return reinterpret_cast<LONG_PTR>(handle);
}

}  // namespace

HRESULT CoCreateInstance(REFCLSID, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) {
    shell->Note("create %d %X %s", outer != nullptr, context, IsEqualIID(iid, IID_IUnknown) ? "unknown" : "other");
    *object = shell->object;
    if (SUCCEEDED(shell->created)) shell->object->AddRef();
    return shell->created;
}
HRESULT CoDisconnectObject(LPUNKNOWN, DWORD reserved) {
    shell->Note("disconnect %u", reserved);
    return S_OK;
}
BOOL COleDispatchDriver::CreateDispatch(REFCLSID, COleException* error) {
    error->m_sc = shell->driverCode;
    return FALSE;
}
LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA* question) {
    shell->Note("browse %lld %d %X %s", NumberOf(question->hwndOwner), question->pidlRoot != nullptr, question->ulFlags,
                question->lpszTitle);
    std::memset(question->pszDisplayName, 'x', MAX_PATH);  // there is room for a whole path
    return shell->folder;
}
BOOL SHGetPathFromIDListA(LPCITEMIDLIST folder, LPSTR path) {
    shell->Note("path %d", folder == shell->folder);
    std::strcpy(path, "D:\\库存");
    return shell->isPath;
}
void CoTaskMemFree(LPVOID memory) {
    shell->Note("free %d", memory == shell->folder);
}
HMENU LoadMenuA(HINSTANCE module, LPCSTR name) {
    shell->Note("load %lld %lld", NumberOf(module), NumberOf(name));
    return shell->menu;
}
HMENU GetSubMenu(HMENU menu, int position) {
    shell->Note("sub-menu %lld %d", NumberOf(menu), position);
    return shell->subMenu;
}
BOOL SetMenuDefaultItem(HMENU menu, UINT item, UINT byPosition) {
    shell->Note("default %lld %u %u", NumberOf(menu), item, byPosition);
    return TRUE;
}
BOOL GetCursorPos(LPPOINT at) {
    *at = {640, 480};
    return TRUE;
}
BOOL TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int reserved, HWND owner, LPCRECT area) {
    shell->Note("show %lld %X %d %d %d %lld %d", NumberOf(menu), flags, x, y, reserved, NumberOf(owner),
                area != nullptr);
    return FALSE;
}
BOOL DestroyMenu(HMENU menu) {
    shell->Note("destroy %lld", NumberOf(menu));
    return TRUE;
}
HANDLE CreateFileA(LPCSTR name, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    const auto port = std::find(shell->ports.begin(), shell->ports.end(), name);
    return port == shell->ports.end() ? INVALID_HANDLE_VALUE : Numbered<HANDLE>(std::stoi(port->substr(3)));
}
BOOL CloseHandle(HANDLE port) {
    shell->Note("close %lld", NumberOf(port));
    return TRUE;
}
LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static const auto own = reinterpret_cast<decltype(&SendMessageA)>(dlsym(RTLD_NEXT, "SendMessageA"));
    if (message < CB_ADDSTRING || message > LB_SETCURSEL) return own(window, message, wParam, lParam);
    shell->Note("send %X %llu %s", message, static_cast<unsigned long long>(wParam),
                lParam != 0 ? reinterpret_cast<const char*>(lParam) : "");
    return message == LB_DELETESTRING ? --shell->items : 0;
}

namespace {

/// An object whose failed queries leave something behind.
class Careless final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = this;
        if (SUCCEEDED(queried)) AddRef();
        return queried;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT queried = S_OK;
    ULONG references = 1;
};

class ShellCalls : public testing::Test {
protected:
    ShellCalls() {
        shell_.object = &object_;
        shell = &shell_;
    }
    ~ShellCalls() override { shell = nullptr; }

    std::vector<std::string> Asked() { return shell_.Take(); }

    Careless object_;
    Shell shell_;
};

constexpr IID kWanted = {0x5B3A2D71, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};

TEST_F(ShellCalls, ObjectsAreMadeInAnyServer) {
    EXPECT_EQ(CreateIDispatch(GUID{}, kWanted), &object_);
    EXPECT_THAT(Asked(), ElementsAre("create 0 15 other"));
    EXPECT_EQ(QueryIDispatch(GUID{}, kWanted), &object_);
    EXPECT_THAT(Asked(), ElementsAre("create 0 15 unknown"));
    EXPECT_EQ(object_.references, 3u) << "one for each caller";
}

TEST_F(ShellCalls, AFailureGivesNothingWhateverItLeftBehind) {
    object_.queried = E_NOINTERFACE;
    SetLastError(7);
    EXPECT_EQ(QueryIDispatch(GUID{}, kWanted), nullptr);
    EXPECT_EQ(GetLastError(), 7u) << "a missing interface leaves the code alone";
    EXPECT_EQ(object_.references, 1u);
    shell_.created = E_ACCESSDENIED;
    EXPECT_EQ(QueryIDispatch(GUID{}, kWanted), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(CreateIDispatch(GUID{}, kWanted), nullptr);
    EXPECT_EQ(CreateIDispatchEx(GUID{}, kWanted, "", nullptr, nullptr, nullptr), nullptr);
}

TEST_F(ShellCalls, AnObjectIsDisconnectedAndNotReleased) {
    ReleaseIDispatch(&object_);
    EXPECT_THAT(Asked(), ElementsAre("disconnect 0"));
    EXPECT_EQ(object_.references, 1u);
    ReleaseIDispatch(nullptr);
    EXPECT_THAT(Asked(), IsEmpty());
}

TEST_F(ShellCalls, ADriverWithoutAReasonMeansThatComWasNotStarted) {
    constexpr char kClass[] = "{5B3A2D71-7C42-4E0A-9D10-428F551077A1}";
    COleDispatchDriver driver;
    for (const SCODE code : {0, 2}) {
        shell_.driverCode = code;
        CString error;
        EXPECT_EQ(CreateIDispatch(&driver, kClass, error), 0);
        EXPECT_STREQ(error, "无法初始化OLE引擎,进程没有调用CoInitialize(NULL)函数!");
    }
    shell_.driverCode = 5;
    CString error;
    EXPECT_EQ(CreateIDispatch(&driver, kClass, error), 0);
    EXPECT_STREQ(error, LookupErrorText(5));
}

TEST_F(ShellCalls, AFolderIsAskedForAboveALiveWindow) {
    ITEMIDLIST folder = {};
    shell_.folder = &folder;
    EXPECT_STREQ(GetSystemPath(nullptr), "D:\\库存");
    EXPECT_THAT(Asked(), ElementsAre("browse 0 0 1 请选择文件夹：", "path 1", "free 1"));
    CWnd window;
    EXPECT_STREQ(GetSystemPath(&window), "D:\\库存");
    EXPECT_EQ(Asked()[0], "browse 0 0 1 请选择文件夹：") << "it has no window yet";
    ASSERT_TRUE(window.CreateEx(0, "STATIC", "", 0, 0, 0, 1, 1, nullptr, nullptr));
    Asked();
    EXPECT_STREQ(GetSystemPath(&window), "D:\\库存");
    EXPECT_EQ(Asked()[0], "browse " + std::to_string(NumberOf(window.GetSafeHwnd())) + " 0 1 请选择文件夹：");
    CWnd stale;
    stale.m_hWnd = window.GetSafeHwnd();
    ASSERT_TRUE(window.DestroyWindow());
    Asked();
    EXPECT_STREQ(GetSystemPath(&stale), "D:\\库存");
    EXPECT_EQ(Asked()[0], "browse 0 0 1 请选择文件夹：") << "it has none any more";
    stale.Detach();
    shell_.isPath = FALSE;
    EXPECT_STREQ(GetSystemPath(nullptr), "");
    EXPECT_EQ(Asked().back(), "free 1");
    shell_.folder = nullptr;
    EXPECT_STREQ(GetSystemPath(nullptr), "");
    EXPECT_THAT(Asked(), ElementsAre("browse 0 0 1 请选择文件夹：")) << "nothing was picked";
}

TEST_F(ShellCalls, AMenuIsLoadedShownAndDestroyed) {
    CComModule module;
    module.Init(nullptr, Numbered<HINSTANCE>(40));
    shell_.menu = Numbered<HMENU>(50);
    shell_.subMenu = Numbered<HMENU>(60);
    CPoint at(10, 20);
    EXPECT_EQ(OnContextMenu(module, Numbered<HWND>(70), 7, 2, 40001, &at), 1);
    EXPECT_THAT(Asked(), ElementsAre("load 40 7", "sub-menu 50 2", "default 60 40001 0", "show 60 2 10 20 0 70 0",
                                     "destroy 50"));
    EXPECT_EQ(OnContextMenu(module, Numbered<HWND>(70), 7, 0, 0, nullptr), 1);
    EXPECT_THAT(Asked(), ElementsAre("load 40 7", "sub-menu 50 0", "show 60 2 640 480 0 70 0", "destroy 50"))
        << "at the pointer";
    shell_.menu = nullptr;
    EXPECT_EQ(OnContextMenu(module, nullptr, 7, 0, 0, &at), 0);
    EXPECT_THAT(Asked(), ElementsAre("load 40 7"));
    module.Term();
}

TEST_F(ShellCalls, PortsAreClosedAndTheFirstOneSelected) {
    CListBox box;
    ASSERT_TRUE(box.CreateEx(0, "STATIC", "", 0, 0, 0, 10, 10, nullptr, nullptr));
    shell_.ports = {"COM3", "COM25", "COM26"};
    shell_.items = 2;
    Asked();
    EXPECT_EQ(GetCommCount(nullptr, &box), 2);
    EXPECT_THAT(Asked(), ElementsAre("send 182 0 ", "send 182 0 ", "send 182 0 ", "close 3", "send 180 0 COM3",
                                     "close 25", "send 180 0 COM25", "send 186 0 "));
    shell_.ports.clear();
    shell_.items = 0;
    EXPECT_EQ(GetCommCount(nullptr, &box), 0);
    EXPECT_THAT(Asked(), ElementsAre("send 182 0 ", "send 186 0 ")) << "selected even where there is none";
    CListBox without;
    EXPECT_EQ(GetCommCount(nullptr, &without), 0);
    EXPECT_THAT(Asked(), IsEmpty()) << "a control without a window is asked nothing";
}

}  // namespace
