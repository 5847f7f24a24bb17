// Recordsets as files, and the records that a criterion names deleted.
#include <afxwin.h>

#include "driver/guard.h"
#include "driver/messages.h"
#include "tkkernel/platform.h"

using namespace tk::driver;

namespace {

// How Recordset.Save writes (ADO PersistFormatEnum).
constexpr long kTableGram = 0;
constexpr long kXml = 1;

constexpr long kCurrentRecord = 1;  // ADO AffectEnum

/// Without an answer nothing is overwritten.
bool MayOverwrite(const char* path, int ask) {
    return !ask || !IsFileExist(path) || AfxMessageBox(kAskOverwrite, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

/// Makes way for the new file. @return whether it may be written
bool MakeWay(const char* path, int ask) {
    const DWORD before = GetLastError();
    if (!MayOverwrite(path, ask)) return false;
    if (DeleteFileA(path) || GetLastError() == ERROR_FILE_NOT_FOUND) SetLastError(before);  // mostly there is none
    return true;
}

int SaveAs(CTRecordset& records, const char* path, int ask, long format, const char* context) {
    if (!MakeWay(path, ask)) return 0;
    return Guard::Run(records, context, 0, [&] {
        records.Save(COleVariant(path, VT_BSTR), format);
        return 1;
    });
}

}  // namespace

int CTRecordset::SaveAsXML(const char* szPath, int bAskOverwrite) {
    return SaveAs(*this, szPath, bAskOverwrite, kXml, kSaveXmlFailed);
}

int CTRecordset::SaveAsFile(const char* szPath, int bAskOverwrite) {
    return SaveAs(*this, szPath, bAskOverwrite, kTableGram, kSaveFileFailed);
}

int CTRecordset::Delete(const char* szCriteria) {
    // A filter that was refused would leave every record in reach.
    if (!SetFilter(szCriteria)) return 0;
    return Guard::Run(*this, szCriteria, 0, [&] {
        const long count = GetRecordCount();
        if (GetEof() || count == 0) return 0;
        for (long i = 0; i < count; ++i) {
            Delete(kCurrentRecord);
            MoveNext();
        }
        return static_cast<int>(count);
    });
}
