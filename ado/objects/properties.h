// ado/objects/properties.h - the dynamic properties of an object, and one of them.
//
// The object says what it has through PropertySource; values are asked for when they are read, not before.
#pragma once

#include <memory>

#include "ado/objects/collection.h"

namespace tk::ado {

/// PropertyAttributesEnum, as combined here.
inline constexpr LONG kPropertyReadOnly = 0x201;   // required, read
inline constexpr LONG kPropertyReadWrite = 0x601;  // required, read, write

struct PropertyInfo {
    const char16_t* name;
    VARTYPE type;
    LONG attributes;
};

class PropertySource {
public:
    /// Both may change when the object is opened or closed.
    virtual std::size_t PropertyCount() = 0;
    virtual PropertyInfo DescribeProperty(std::size_t index) = 0;

    /// @throws AdoError
    virtual Value ReadProperty(std::size_t index) = 0;

    /// Called for writable properties only. @throws AdoError
    virtual void WriteProperty(std::size_t index, const Value& value) = 0;
    virtual std::shared_ptr<ErrorList> PropertyErrors() const = 0;

protected:
    ~PropertySource() = default;
};

class Property final : public Automation<Property> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Property");
    static std::span<const Member<Property>> Members();

    /// @param owner  the object that is the source; kept alive
    Property(Ref<AutomationObject> owner, PropertySource& source, std::size_t index)
        : owner_(std::move(owner)), source_(source), info_(source.DescribeProperty(index)) {}

protected:
    std::shared_ptr<ErrorList> Errors() const override { return source_.PropertyErrors(); }

private:
    void GetValue(Call& call);
    void PutValue(Call& call);
    void GetName(Call& call);
    void GetType(Call& call);
    void GetAttributes(Call& call);
    void PutAttributes(Call& call);
    std::size_t Index() const;

    Ref<AutomationObject> owner_;
    PropertySource& source_;
    PropertyInfo info_;
};

class Properties final : public Collection<Properties> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Properties");
    static std::span<const Member<Properties>> Members();

    Properties(Ref<AutomationObject> owner, PropertySource& source) : owner_(std::move(owner)), source_(source) {}

    std::size_t ItemCount() const { return source_.PropertyCount(); }
    std::size_t FindItem(const VARIANT& index) const;
    Ref<Property> MakeItem(std::size_t index) const { return Make<Property>(owner_, source_, index); }

protected:
    std::shared_ptr<ErrorList> Errors() const override { return source_.PropertyErrors(); }

private:
    Ref<AutomationObject> owner_;
    PropertySource& source_;
};

/// The property of a name, without regard to case.
std::optional<std::size_t> FindProperty(PropertySource& source, std::u16string_view name);

}  // namespace tk::ado
