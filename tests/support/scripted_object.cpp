#include "support/scripted_object.h"

#include <set>

namespace tk::test {

namespace {

std::set<IUnknown*>& Living() {
    static std::set<IUnknown*> objects;
    return objects;
}

std::string KindName(WORD kind) {
    switch (kind) {
        case DISPATCH_METHOD:
            return "call";
        case DISPATCH_PROPERTYGET:
            return "get";
        case DISPATCH_PROPERTYPUT:
            return "put";
        case DISPATCH_PROPERTYPUTREF:
            return "putref";
        default:
            return "kind " + std::to_string(kind);
    }
}

bool IsPut(WORD kind) {
    return kind == DISPATCH_PROPERTYPUT || kind == DISPATCH_PROPERTYPUTREF;
}

bool HasNamedValue(const DISPPARAMS& parameters) {
    return parameters.cNamedArgs == 1 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
}

std::string Line(const std::string& name, DISPID id, WORD kind, const DISPPARAMS& parameters,
                 const Arguments& arguments) {
    std::string line = name + "." + KindName(kind) + " " + std::to_string(id);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        line += (i == 0 ? " (" : ", ") + Describe(*arguments[i]);
    if (!arguments.empty()) line += ")";
    if (IsPut(kind) != HasNamedValue(parameters)) line += IsPut(kind) ? " unnamed" : " named";
    return line;
}

}  // namespace

Script& Script::Returns(COleVariant value) {
    answers_.back().value = std::move(value);
    return *this;
}

Script& Script::Stores(std::size_t position, COleVariant value) {
    answers_.back().stored.emplace_back(position, std::move(value));
    return *this;
}

Script& Script::Does(std::function<COleVariant(const Arguments&)> action) {
    answers_.back().action = std::move(action);
    return *this;
}

Script& Script::Fails(const char* description, SCODE code) {
    answers_.back().result = DISP_E_EXCEPTION;
    answers_.back().description = description;
    answers_.back().code = code;
    return *this;
}

Script& Script::FailsWith(HRESULT result) {
    answers_.back().result = result;
    return *this;
}

Script& Script::Then() {
    answers_.emplace_back();
    return *this;
}

HRESULT Script::Run(const Arguments& arguments, VARIANT* result, EXCEPINFO* exception) {
    const Answer answer = answers_.front();
    if (answers_.size() > 1) answers_.pop_front();
    if (answer.result == DISP_E_EXCEPTION && exception != nullptr) {
        *exception = {};
        exception->scode = answer.code;
        if (answer.description != nullptr) exception->bstrDescription = CString(answer.description).AllocSysString();
    }
    if (FAILED(answer.result)) return answer.result;
    for (const auto& [position, value] : answer.stored) {
        if (position >= arguments.size() || V_VT(arguments[position]) != (VT_BYREF | VT_VARIANT)) {
            return DISP_E_TYPEMISMATCH;
        }
        VariantCopy(V_VARIANTREF(arguments[position]), const_cast<COleVariant*>(&value));
    }
    COleVariant value = answer.action ? answer.action(arguments) : answer.value;
    if (result != nullptr) *result = value.Detach();
    return answer.result;
}

Held<ScriptedObject> ScriptedObject::Make(std::string name, Journal* journal) {
    return Held<ScriptedObject>(new ScriptedObject(std::move(name), journal));
}

int ScriptedObject::Alive() {
    return static_cast<int>(Living().size());
}

std::string ScriptedObject::NameOf(IUnknown* object) {
    return Living().contains(object) ? static_cast<ScriptedObject*>(object)->name_ : "";
}

ScriptedObject::ScriptedObject(std::string name, Journal* journal) : name_(std::move(name)), journal_(journal) {
    Living().insert(this);
}

ScriptedObject::~ScriptedObject() {
    Living().erase(this);
}

int ScriptedObject::Asked(REFIID iid) const {
    int times = 0;
    for (const IID& asked : asked_)
        times += IsEqualIID(asked, iid) ? 1 : 0;
    return times;
}

HRESULT ScriptedObject::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    asked_.push_back(iid);
    *object = nullptr;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch)) *object = static_cast<IDispatch*>(this);
    for (const auto& [offered, other] : offers_) {
        if (IsEqualIID(iid, offered)) *object = other;
    }
    if (*object == nullptr) return E_NOINTERFACE;
    static_cast<IUnknown*>(*object)->AddRef();
    return S_OK;
}

ULONG ScriptedObject::AddRef() {
    return ++references_;
}

ULONG ScriptedObject::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

HRESULT ScriptedObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT ScriptedObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    if (info != nullptr) *info = nullptr;
    return E_NOTIMPL;
}

HRESULT ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return DISP_E_UNKNOWNNAME;
}

HRESULT ScriptedObject::Invoke(DISPID id, REFIID reserved, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                               EXCEPINFO* exception, UINT*) {
    if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (before_) before_();
    Arguments arguments;
    for (UINT i = parameters->cArgs; i > 0; --i)
        arguments.push_back(&parameters->rgvarg[i - 1]);
    if (journal_ != nullptr) journal_->Add(Line(name_, id, kind, *parameters, arguments));
    const auto script = scripts_.find({id, kind});
    return script == scripts_.end() ? S_OK : script->second.Run(arguments, result, exception);
}

}  // namespace tk::test
