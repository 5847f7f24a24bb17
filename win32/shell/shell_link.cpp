#include "win32/shell/shell_link.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>

#include "shlobj.h"
#include "tkwin32/text.h"
#include "win32/shell/link_file.h"
#include "win32/system/file_descriptor.h"
#include "win32/system/guid_text.h"
#include "win32/system/system_call_error.h"
#include "winbase.h"

namespace tk::shell {
namespace {

constexpr std::string_view kDesktopEntry = ".desktop";

HRESULT FailureOf(int error) {
    return HRESULT_FROM_WIN32(system::ErrorFromErrno(error));
}

/// Writes a file beside the place it is meant for and moves it there. @return errno
int WriteWhole(const std::string& path, const std::string& content, mode_t mode) {
    GUID guid{};
    CoCreateGuid(&guid);
    char unique[system::kGuidDigits];
    system::WriteGuid(guid, unique, system::kLowerDigits);
    // Not made of the file's own name, which may be as long as names can be.
    const std::string draft = path.substr(0, path.rfind('/') + 1) + ".tk-" + std::string(unique, sizeof unique);
    const system::FileDescriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file) return errno;
    int error = 0;
    for (std::size_t done = 0; done < content.size() && error == 0;) {
        const ssize_t count = write(file.Get(), content.data() + done, content.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            error = errno;
        }
    }
    if (error == 0 && rename(draft.c_str(), path.c_str()) != 0) error = errno;
    if (error != 0) unlink(draft.c_str());
    return error;
}

std::string NameOf(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.size() - kDesktopEntry.size());
}

HRESULT CopyText(const std::u16string& wide, LPSTR buffer, int room) {
    if (buffer == nullptr || room <= 0) return E_INVALIDARG;
    const std::string text = text::Utf16ToGbk(wide);
    const std::size_t length = text::WholeGbkPrefix(text, static_cast<std::size_t>(room) - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = 0;
    return S_OK;
}

class ShellLink final : public IShellLinkA, public IPersistFile {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IShellLinkA) *object = static_cast<IShellLinkA*>(this);
        if (iid == IID_IPersist || iid == IID_IPersistFile) *object = static_cast<IPersistFile*>(this);
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetPath(LPSTR file, int room, WIN32_FIND_DATAA* found, DWORD) override {
        if (found != nullptr) *found = {};
        const HRESULT result = CopyText(link_.target, file, room);
        return SUCCEEDED(result) && link_.target.empty() ? S_FALSE : result;
    }
    HRESULT STDMETHODCALLTYPE GetIDList(LPITEMIDLIST*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetIDList(LPCITEMIDLIST) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDescription(LPSTR name, int room) override {
        return CopyText(link_.description, name, room);
    }
    HRESULT STDMETHODCALLTYPE SetDescription(LPCSTR name) override { return Store(&Link::description, name); }
    HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPSTR folder, int room) override {
        return CopyText(link_.directory, folder, room);
    }
    HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCSTR folder) override { return Store(&Link::directory, folder); }
    HRESULT STDMETHODCALLTYPE GetArguments(LPSTR arguments, int room) override {
        return CopyText(link_.arguments, arguments, room);
    }
    HRESULT STDMETHODCALLTYPE SetArguments(LPCSTR arguments) override { return Store(&Link::arguments, arguments); }
    HRESULT STDMETHODCALLTYPE GetHotkey(WORD* hotkey) override { return Tell(link_.hotkey, hotkey); }
    HRESULT STDMETHODCALLTYPE SetHotkey(WORD hotkey) override { return Set(link_.hotkey, hotkey); }
    HRESULT STDMETHODCALLTYPE GetShowCmd(int* show) override { return Tell(link_.show, show); }
    HRESULT STDMETHODCALLTYPE SetShowCmd(int show) override { return Set(link_.show, show); }
    HRESULT STDMETHODCALLTYPE GetIconLocation(LPSTR path, int room, int* icon) override {
        const HRESULT result = Tell(link_.icon, icon);
        return FAILED(result) ? result : CopyText(link_.iconPath, path, room);
    }
    HRESULT STDMETHODCALLTYPE SetIconLocation(LPCSTR path, int icon) override {
        Set(link_.icon, icon);
        return Store(&Link::iconPath, path);
    }
    HRESULT STDMETHODCALLTYPE SetRelativePath(LPCSTR path, DWORD) override { return Store(&Link::relativePath, path); }
    HRESULT STDMETHODCALLTYPE Resolve(HWND, DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetPath(LPCSTR file) override { return Store(&Link::target, file); }

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override { return Tell(CLSID_ShellLink, clsid); }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return dirty_ ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR name, DWORD) override {
        if (name == nullptr) return E_INVALIDARG;
        const std::string path = text::Utf16ToUtf8(name);
        if (path.ends_with(kDesktopEntry)) return E_NOTIMPL;
        struct stat state {};
        if (stat(path.c_str(), &state) != 0) return FailureOf(errno);
        if (!S_ISREG(state.st_mode)) return E_ACCESSDENIED;  // others may keep who opens them waiting
        std::ifstream file(path, std::ios::binary);
        if (!file) return E_ACCESSDENIED;
        std::string content(static_cast<std::size_t>(std::min<off_t>(state.st_size, kLargest)), '\0');
        file.read(content.data(), static_cast<std::streamsize>(content.size()));
        content.resize(static_cast<std::size_t>(file.gcount()));
        auto link = ReadLinkFile(content);
        if (!link) return E_FAIL;
        link_ = *std::move(link);
        file_.assign(name);
        dirty_ = false;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Save(LPCOLESTR name, BOOL remember) override {
        const std::u16string target = name != nullptr ? name : file_;
        if (target.empty()) return E_INVALIDARG;
        const std::string path = text::Utf16ToUtf8(target);
        const bool entry = path.ends_with(kDesktopEntry);
        const std::string content = entry ? WriteDesktopEntry(link_, NameOf(path)) : WriteLinkFile(link_);
        if (const int error = WriteWhole(path, content, entry ? 0777 : 0666); error != 0) return FailureOf(error);
        if (name == nullptr || remember) {
            file_ = target;
            dirty_ = false;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* name) override {
        if (name == nullptr) return E_POINTER;
        *name = nullptr;
        if (file_.empty()) return S_FALSE;
        const std::size_t bytes = (file_.size() + 1) * sizeof(OLECHAR);
        *name = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
        if (*name == nullptr) return E_OUTOFMEMORY;
        std::memcpy(*name, file_.c_str(), bytes);
        return S_OK;
    }

private:
    static constexpr off_t kLargest = 1 << 20;

    ~ShellLink() = default;

    HRESULT Store(std::u16string Link::*place, LPCSTR text) {
        link_.*place = text != nullptr ? text::GbkToUtf16(text) : std::u16string();
        dirty_ = true;
        return S_OK;
    }
    template <typename Value>
    HRESULT Set(Value& place, Value value) {
        place = value;
        dirty_ = true;
        return S_OK;
    }
    template <typename Value>
    static HRESULT Tell(const Value& value, Value* target) {
        if (target == nullptr) return E_POINTER;
        *target = value;
        return S_OK;
    }

    std::atomic<ULONG> references_ = 1;
    Link link_;
    std::u16string file_;
    bool dirty_ = false;
};

/// Holds nothing, so one serves everybody and is never freed.
class ShellLinkFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        auto* link = new (std::nothrow) ShellLink;
        if (link == nullptr) return E_OUTOFMEMORY;
        const HRESULT result = link->QueryInterface(iid, object);
        link->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    static ShellLinkFactory factory;
    return clsid == CLSID_ShellLink ? factory.QueryInterface(iid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace tk::shell
