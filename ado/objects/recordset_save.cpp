// Recordset: into files and out of them.
#include <sys/stat.h>

#include <algorithm>
#include <optional>

#include "ado/cursor/text.h"
#include "ado/objects/recordset.h"
#include "ado/odbc/ascii.h"
#include "ado/persist/messages.h"

namespace tk::ado {
namespace {

bool IsPersistProvider(std::string_view provider) noexcept {
    constexpr std::string_view kName = "MSPersist";
    if (!EqualsNoCase(provider.substr(0, kName.size()), kName)) return false;
    return provider.size() == kName.size() || provider[kName.size()] == '.';
}

/// True for a connection text whose provider is the one of saved recordsets.
bool NamesPersistProvider(std::u16string_view text) {
    constexpr std::u16string_view kName = u"mspersist";
    const auto same = [](char16_t unit, char16_t lower) { return (unit | 0x20) == lower; };  // letters: without case
    // Hardly any text has the name in it, and parsing takes its time.
    if (std::search(text.begin(), text.end(), kName.begin(), kName.end(), same) == text.end()) return false;
    return IsPersistProvider(ReadProperties(ConnectionString::Parse(ToUtf8(text))).provider);
}

bool IsRegularFile(const std::string& path) noexcept {
    struct stat found = {};
    return ::stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

PersistFormat FormatOf(LONG number) {
    if (number == static_cast<LONG>(PersistFormat::Binary)) return PersistFormat::Binary;
    if (number == static_cast<LONG>(PersistFormat::Xml)) return PersistFormat::Xml;
    throw AdoError(ErrorNumber::InvalidArgument, NumberText(number));
}

}  // namespace

/// A file is meant when the provider or the options say so, and by a file's name where there is no connection at all.
bool Recordset::MeansFile(const Ref<Connection>& connection, std::u16string_view text, std::u16string_view source,
                          LONG options) {
    constexpr LONG kKinds = kCommandText | kCommandTable | kCommandStoredProc | kCommandTableDirect;
    const bool saysKind = options != -1 && (options & kKinds) != 0;
    const bool saysFile = options != -1 && (options & kCommandFile) != 0;
    const bool isPersist = !connection && NamesPersistProvider(text);
    if (isPersist || saysFile) {
        if (saysKind || (saysFile && !isPersist && (connection || !text.empty()))) {
            throw AdoError(ErrorNumber::InvalidArgument, NumberText(options));
        }
        return true;
    }
    return !connection && text.empty() && !saysKind && IsRegularFile(ToUtf8(source));
}

void Recordset::OpenFile(std::u16string_view text, std::u16string_view source, LONG cursorType, LONG lock) {
    if (source.empty()) throw AdoError(ErrorNumber::InvalidArgument, std::u16string(kTextNoName));
    const std::string path = ToUtf8(source);
    LoadedFile loaded = LoadRows(path);
    auto rows = std::make_shared<OpenRows>(loaded.rows.rows, nullptr);
    ApplyChanges(loaded.rows, *rows->store);
    connection_ = nullptr;
    connectionText_ = text;
    source_ = source;
    if (cursorType != -1) cursorType_ = cursorType;
    if (lock != -1) wantedLock_ = lock;
    settings_.rules = std::move(loaded.rows.rules);
    filter_ = Value();
    SettleInView(std::move(rows), wantedLock_);
    saved_ = {path, loaded.format};
}

void Recordset::Save(Call& call) {
    OpenRows& rows = Rows();
    std::string path = saved_.path;
    if (!call.IsNothing(0)) {
        const Value given = call.Variant(0);
        // A stream object would be the other possibility; there are none here.
        if (given.Type() == VT_DISPATCH || given.Type() == VT_UNKNOWN) {
            throw AdoError(ErrorNumber::FeatureNotAvailable);
        }
        if (given.Type() != VT_BSTR) throw AdoError(ErrorNumber::InvalidArgument);
        if (const auto name = ViewOf(given.Get().bstrVal); !name.empty()) path = ToUtf8(name);
    }
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw AdoError(ErrorNumber::InvalidArgument, std::u16string(kTextNoName));
    }
    const bool isSame = path == saved_.path;
    PersistFormat format = isSame ? saved_.format : PersistFormat::Binary;
    if (!call.IsOmitted(1)) format = FormatOf(call.Long(1));

    SaveEdit();
    // What is written back later has to be known while there is somebody to ask.
    if (lock_ != kLockReadOnly) DescribeOrigins();
    auto keys = ParseSort(sort_, rows.store->Columns());
    bool showDeleted = false;
    std::function<bool(std::size_t)> visible;
    // Contract: a filter by text restricts what is saved; one by state or by bookmarks does not.
    if (filter_.Type() == VT_BSTR) visible = FilterOf(filter_, showDeleted);
    std::optional<RowView> view;
    if (!keys.empty() || visible) {
        view.emplace(rows.store);
        view->SetSort(std::move(keys));
        view->SetFilter(visible, false);
    }
    RowFeed feed = view ? RowFeed(*view, visible) : RowFeed(*rows.store);
    SaveRows(SavedSet{feed, settings_.rules, lock_ != kLockReadOnly}, path, format,
             isSame ? FileWriter::Existing::Replace : FileWriter::Existing::Refuse);
    saved_ = {std::move(path), format};
    ClientCursor& cursor = Cursor();
    if (!cursor.Bof() || !cursor.Eof()) cursor.MoveFirst();
}

}  // namespace tk::ado
