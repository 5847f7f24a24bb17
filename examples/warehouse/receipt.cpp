// receipt.cpp - a receipt from the suppliers' file.
#include <cstdio>

#include "warehouse.h"

BOOL CReceipt::Load(LPCTSTR szFile) {
    FILE* pFile = fopen(szFile, "r");
    if (pFile == NULL) {
        m_strError.Format("打不开文件 %s", szFile);
        return FALSE;
    }
    CString strLine;
    BOOL bGood = ReadLine(pFile, strLine) && SetHead(strLine);
    while (bGood && ReadLine(pFile, strLine)) {
        if (!strLine.IsEmpty()) bGood = AddLine(strLine);
    }
    fclose(pFile);
    if (bGood && m_arLines.GetSize() == 0) {
        m_strError = "入库单没有明细";
        return FALSE;
    }
    if (!bGood && m_strError.IsEmpty()) m_strError = "入库单是空的";
    return bGood;
}

BOOL CReceipt::SetHead(LPCTSTR szLine) {
    CMapStringToString mapFields;
    StringToMap(mapFields, szLine);
    mapFields.Lookup("供应商", m_strSupplier);
    mapFields.Lookup("经手人", m_strKeeper);
    if (mapFields.Lookup("单号", m_strNumber) && !m_strNumber.IsEmpty()) return TRUE;
    m_strError = "入库单没有单号";
    return FALSE;
}

BOOL CReceipt::AddLine(LPCTSTR szLine) {
    CStringArray arFields;
    StringToArray(arFields, szLine, ",");
    CReceiptLine line;
    if (arFields.GetSize() == 3) {
        line.m_strArticle = arFields[0];
        line.m_dQuantity = Round(arFields[1], 2);
        line.m_dPrice = Round(arFields[2], 2);
    }
    if (line.m_dQuantity <= 0 || line.m_dPrice < 0) {
        m_strError.Format("明细有误:%s", szLine);
        return FALSE;
    }
    m_arLines.Add(line);
    return TRUE;
}

double CReceipt::GetAmount() const {
    double dAmount = 0;
    for (int i = 0; i < m_arLines.GetSize(); i++)
        dAmount += m_arLines[i].GetAmount();
    return dAmount;
}
