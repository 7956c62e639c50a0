#include "tabledrivenparser/src/value_store.h"

#include "tabledrivenparser/src/value_constraint.h"

namespace tabledrivenparser {

namespace {

// Asks the filter, then the constraints, of a parameter that has any.
bool isAccepted(Parser& parser, uint32_t parameter, uint64_t value) {
    Parameters& parameters = parser.parameters();
    const ParameterDescriptor& descriptor = parameters.descriptors[parameter];
    if (descriptor.constraints == nullptr) {
        return true;
    }
    uint32_t activeMask = parser.options().activeMask;
    ValueFilter* filter = parameters.values[parameter].filter;
    if (filter != nullptr && !filter->accept(parameters, descriptor, activeMask, value, false)) {
        return false;
    }
    return passesConstraints(static_cast<const ValueConstraint*>(descriptor.constraints),
                             descriptor.type, value, activeMask);
}

// Appends to the parameter's list, which its first element brings into being. False if the element
// was rejected.
template <class List, class Element>
bool appendElement(Parser& parser, uint32_t parameter, Element element, uint64_t value) {
    if (!isAccepted(parser, parameter, value)) {
        return false;
    }
    if (doesListenerTake(parser, parameter, value)) {
        return true;
    }
    uint64_t& slot = parser.parameters().values[parameter].value;
    if (slot == 0) {
        slot = addressValue(makeInDefaultRegion<List>(element));
    } else {
        pointerOfValue<List>(slot)->append(element);
    }
    return true;
}

bool stampIf(bool isStored, Parser& parser, uint32_t parameter) {
    if (isStored) {
        parser.bumpSequence(parameter);
    }
    return isStored;
}

} // namespace

bool doesListenerTake(Parser& parser, uint32_t parameter, uint64_t value) {
    Parameters& parameters = parser.parameters();
    return parameters.listener != nullptr &&
           parameters.listener->parameterSet(parameters, parameter, value);
}

bool storeValue(Parser& parser, uint32_t parameter, uint64_t value) {
    if (!isAccepted(parser, parameter, value)) {
        return false;
    }
    storeAcceptedValue(parser, parameter, value);
    return true;
}

void storeAcceptedValue(Parser& parser, uint32_t parameter, uint64_t value) {
    if (!doesListenerTake(parser, parameter, value)) {
        parser.parameters().values[parameter].value = value;
    }
    parser.bumpSequence(parameter);
}

bool appendInt(Parser& parser, uint32_t parameter, int32_t element) {
    auto value = static_cast<uint64_t>(static_cast<int64_t>(element));
    bool isStored = appendElement<LinkedList<int>>(parser, parameter, element, value);
    return stampIf(isStored, parser, parameter);
}

bool appendInt64(Parser& parser, uint32_t parameter, int64_t element) {
    auto value = static_cast<uint64_t>(element);
    bool isStored = appendElement<LinkedList<int64_t>>(parser, parameter, element, value);
    return stampIf(isStored, parser, parameter);
}

bool appendText(Parser& parser, uint32_t parameter, const char* element) {
    bool isStored = appendElement<StrList>(parser, parameter, element, addressValue(element));
    return stampIf(isStored, parser, parameter);
}

bool appendViaFileName(Parser& parser, uint32_t parameter, const char* name) {
    return appendElement<StrList>(parser, parameter, name, addressValue(name));
}

} // namespace tabledrivenparser
