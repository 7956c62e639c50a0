// The parameters that options set: what kind of value each has, what is allowed, and the value.
//
// A program has two arrays of equal length, indexed by the parameter: constant descriptors, and
// values, which start at their defaults and are all that parsing writes. Every value carries two
// stamps of a counter that runs through the whole run, so that later code can tell which of two
// options came last.
#pragma once

#include "tabledrivenparser/interface/listener.h"
#include "tabledrivenparser/interface/option_table.h"
#include "tabledrivenparser/interface/str_list.h"

#include <cstdint>

namespace tabledrivenparser {

class Parser;
struct ParameterDescriptor;
struct Parameters;

// An address as a value, and the address that a value holds. Values have one width for all types,
// so that tables of different types can stand in one array.
inline uint64_t addressValue(const void* address) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(address));
}
template <class T>
T* pointerOfValue(uint64_t value) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the one place that turns a value back
    return reinterpret_cast<T*>(static_cast<uintptr_t>(value));
}
inline const char* textOfValue(uint64_t value) {
    return pointerOfValue<const char>(value);
}

enum ParameterType : uint32_t {
    ParameterType_BOOLEAN = 0,       // 0 or 1
    ParameterType_ENUM = 1,          // EnumRow::value
    ParameterType_ADDRESS = 2,       // unsigned, 32 bits
    ParameterType_ADDRESS64 = 3,     // unsigned, 64 bits
    ParameterType_INT = 4,           // signed, 32 bits, sign-extended
    ParameterType_INT_VECTOR = 5,    // address of a LinkedList<int>, null while empty
    ParameterType_INT64_VECTOR = 6,  // address of a LinkedList<int64_t>, null while empty
    ParameterType_STRING = 7,        // address of the text
    ParameterType_STRING_VECTOR = 8, // address of a StrList, null while empty
    ParameterType_CALL_BACK = 9,     // address of a CallBackHolder
    ParameterType_VIA_FILE = 10,     // address of a StrList: the files read, null while none
};

// How the default of a parameter is found.
enum DefaultKind : uint32_t {
    DefaultKind_None = 0,     // defaultValue, but any setting counts as a change from it
    DefaultKind_Value = 1,    // defaultValue
    DefaultKind_Masked = 2,   // defaultValue is the address of a list of MaskedDefault
    DefaultKind_Provider = 3, // the text that ParameterValue::defaultProvider gives
};

// One node of a default that depends on a mask: the first node each of whose masks shares a bit
// with it gives the value.
struct MaskedDefault {
    const uint32_t* masks = nullptr; // ended by 0
    uint64_t value = 0;
    const MaskedDefault* next = nullptr;
};

struct EnumRow {
    // What the user writes; null makes a hole that is skipped.
    const char* name = nullptr;
    // 0 is the row that lists the selectable arguments.
    uint32_t value = 0;
    // Masks ended by 0, null for none. Those of the first row with a value say whether the value
    // can be chosen at all; a row's own say whether the row is listed, and rank rows of one name.
    const uint32_t* valueRestrictions = nullptr;
    const uint32_t* rowRestrictions = nullptr;
    uint8_t deprecated = 0;
};

struct EnumTable {
    uint32_t count = 0;
    const EnumRow* rows = nullptr;
};

// A limit on the values of a numeric or text parameter. A node applies if each of its masks (ended
// by 0) shares a bit with the table's activeMask. A value passes if no node applies, or if it
// satisfies at least one that does.
struct ValueConstraint {
    const uint32_t* masks = nullptr;
    // INT, ADDRESS, INT_VECTOR: pairs (low, high) of int32_t; ADDRESS64, INT64_VECTOR: of int64_t;
    // both end with the first pair whose low is above its high. BOOLEAN, STRING, STRING_VECTOR and
    // VIA_FILE: a NUL-ended pattern. Its alternatives are split by "|"; one that begins with "C" is
    // compared case and all from its next character, any other with the value in lower case; a "*"
    // accepts the rest of the value.
    const void* allowed = nullptr;
    const ValueConstraint* next = nullptr;
};

// A program's own test of values. It runs before the constraints of any parameter that has them,
// and for each candidate of an ENUM.
class ValueFilter {
public:
    // False rejects `value`, which is held as in ParameterValue (one element for a vector). `quiet`
    // asks for no message: the value is only about to be listed.
    virtual bool accept(Parameters& parameters, const ParameterDescriptor& descriptor,
                        uint32_t mask, uint64_t value, bool quiet) = 0;

protected:
    ValueFilter() = default;
    ValueFilter(const ValueFilter&) = default;
    ValueFilter& operator=(const ValueFilter&) = default;
    ~ValueFilter() = default;
};

// A source of defaults that are known at run time only.
class DefaultProvider {
public:
    // The default as a NUL-ended text: exactly "true" or "false" for a BOOLEAN, an EnumRow's name
    // for an ENUM. It lives for the call that asked. Null is a failure.
    virtual const char* provide(const ParameterDescriptor& descriptor) = 0;

protected:
    DefaultProvider() = default;
    DefaultProvider(const DefaultProvider&) = default;
    DefaultProvider& operator=(const DefaultProvider&) = default;
    ~DefaultProvider() = default;
};

struct ParameterDescriptor {
    // A ParameterType.
    uint32_t type = ParameterType_BOOLEAN;
    // A DefaultKind.
    uint32_t defaultKind = DefaultKind_None;
    uint64_t defaultValue = 0;
    // An EnumTable for an ENUM, else the first ValueConstraint; may be null.
    const void* constraints = nullptr;
    // The rows that set this parameter, ended by null; may be null for none.
    const OptionRow* const* rows = nullptr;
};

struct ParameterValue {
    // As ParameterType tells. A vector starts at null: its list is made by the parser and ended
    // with it.
    uint64_t value = 0;
    // The stamps of the first and the last setting on this run; 0 while the parameter is not set.
    uint32_t firstSet = 0;
    uint32_t lastSet = 0;
    ValueFilter* filter = nullptr;
    DefaultProvider* defaultProvider = nullptr;
};

struct Parameters {
    uint32_t parameterCount = 0;
    ParameterValue* values = nullptr;
    uint32_t descriptorCount = 0;
    const ParameterDescriptor* descriptors = nullptr;
    // 1 once the selectable arguments of an ENUM have been listed.
    uint32_t listShown = 0;
    Listener* listener = nullptr;
    Parser* parser = nullptr;

    // The value of a parameter, read by its type. The lists end with the parser; texts of the
    // command line and copies in the default region live on.
    bool isSet(uint32_t parameter) const { return values[parameter].lastSet != 0; }
    uint32_t firstSet(uint32_t parameter) const { return values[parameter].firstSet; }
    uint32_t lastSet(uint32_t parameter) const { return values[parameter].lastSet; }
    bool boolValue(uint32_t parameter) const { return values[parameter].value != 0; }
    uint32_t enumValue(uint32_t parameter) const {
        return static_cast<uint32_t>(values[parameter].value);
    }
    uint32_t addressValue(uint32_t parameter) const {
        return static_cast<uint32_t>(values[parameter].value);
    }
    uint64_t address64Value(uint32_t parameter) const { return values[parameter].value; }
    int32_t intValue(uint32_t parameter) const {
        return static_cast<int32_t>(values[parameter].value);
    }
    // Null while nothing was stored.
    const char* textValue(uint32_t parameter) const {
        return pointerOfValue<const char>(values[parameter].value);
    }
    const LinkedList<int>* intList(uint32_t parameter) const {
        return pointerOfValue<const LinkedList<int>>(values[parameter].value);
    }
    const LinkedList<int64_t>* int64List(uint32_t parameter) const {
        return pointerOfValue<const LinkedList<int64_t>>(values[parameter].value);
    }
    const StrList* textList(uint32_t parameter) const {
        return pointerOfValue<const StrList>(values[parameter].value);
    }
};

} // namespace tabledrivenparser
