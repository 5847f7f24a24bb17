#include "catalog/schema_restrictions.h"

namespace tk::catalog {

COleSafeArray RestrictionArray(const Schema& schema, std::initializer_list<Restriction> restrictions) {
    COleSafeArray array;
    array.CreateOneDim(VT_VARIANT, schema.restrictions);
    for (const Restriction& restriction : restrictions) {
        if (restriction.text == nullptr) continue;
        COleVariant text(restriction.text, VT_BSTR);
        array.PutElement(&restriction.position, &text);
    }
    return array;
}

}  // namespace tk::catalog
