// voucher.cpp - the voucher on paper: a double-byte character is two columns wide and two bytes long, so "%-18s"
// aligns.
#include "warehouse.h"

static const char RULE[] = "------------------------------------------------------------------\n";

CString GetVoucher(const CReceipt& receipt, CWarehouse* pWarehouse) {
    CString strVoucher;
    strVoucher.Format("%38s\n", "入 库 单");
    CString strDate = "(未入库)";
    if (receipt.m_datePosted.GetStatus() == COleDateTime::valid) {
        strDate = DateToString(receipt.m_datePosted, "YYYY年MM月DD日");
    }
    strVoucher.AppendFormat("单号:%-40s日期:%s\n", (LPCTSTR)receipt.m_strNumber, (LPCTSTR)strDate);
    strVoucher.AppendFormat("供应商:%s\n", (LPCTSTR)receipt.m_strSupplier);
    strVoucher += RULE;
    strVoucher.AppendFormat("%-10s%-20s%10s%12s%14s\n", "编号", "品名", "数量", "单价", "金额");
    for (int i = 0; i < receipt.m_arLines.GetSize(); i++) {
        const CReceiptLine& line = receipt.m_arLines[i];
        const CString strName = pWarehouse != NULL ? pWarehouse->GetArticleName(line.m_strArticle) : CString();
        strVoucher.AppendFormat("%-10s%-20s%10s%12s%14s\n", (LPCTSTR)line.m_strArticle, (LPCTSTR)strName,
                                (LPCTSTR)DoubleToString(line.m_dQuantity, "#,##0.##"),
                                (LPCTSTR)DoubleToString(line.m_dPrice, "#,##0.00"),
                                (LPCTSTR)DoubleToString(line.GetAmount(), "#,##0.00"));
    }
    strVoucher += RULE;
    const double dAmount = receipt.GetAmount();
    strVoucher.AppendFormat("合计:￥%s\n", (LPCTSTR)DoubleToString(dAmount, "#,##0.00"));
    strVoucher.AppendFormat("大写:%s\n", (LPCTSTR)UpperCurrency(dAmount, 1));
    strVoucher.AppendFormat("经手人:%s\n", (LPCTSTR)receipt.m_strKeeper);
    return strVoucher;
}
