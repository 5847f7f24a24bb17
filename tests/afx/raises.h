// tests/afx/raises.h - what a call raises: the exception is caught, looked at and deleted.
#pragma once

#include <afxole.h>

#include <string>

/// The class name of the exception that the work raises; "" when it raises none.
template <class Work>
std::string Raised(Work&& work) {
    try {
        work();
    } catch (CException* e) {
        std::string name = e->GetRuntimeClass()->m_lpszClassName;
        e->Delete();
        return name;
    }
    return "";
}

/// The code of the COleException that the work raises; S_OK when it raises none, S_FALSE for any other exception.
template <class Work>
SCODE RaisedCode(Work&& work) {
    try {
        work();
    } catch (COleException* e) {
        const SCODE code = e->m_sc;
        e->Delete();
        return code;
    } catch (CException* e) {
        e->Delete();
        return S_FALSE;
    }
    return S_OK;
}
