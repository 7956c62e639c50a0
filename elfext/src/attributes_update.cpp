// Makes the contents of the attributes section: what the module, its sections and its symbols
// state, vendor by vendor. The layout is told in `build_attributes_parsers.h`.
//
// What an object states is there as bytes, as they were read, and as a record. As long as the bytes
// say what the record says they are written as they are, so that attributes which nobody here
// knows survive. Otherwise the record is written.
#include "elfext/src/auxiliary_state.h"

#include "attributes/interface/build_attributes_cache.h"
#include "elfext/interface/build_attributes_parsers.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <tuple>

namespace elfext {
namespace {

using attributes::BuildAttributes;
using attributes::BuildAttributesBlock;

constexpr uint8_t formatVersion = 'A';
enum Scope : uint32_t { Scope_File = 1, Scope_Section = 2, Scope_Symbol = 3 };

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const BuildAttributesBlock* block) {
    return block != nullptr ? Bytes(block->getData(), block->getData() + block->getLength())
                            : Bytes();
}

// --- Records

void encodeSlots(RecordBytes& bytes, const BuildAttributes& record, attributes::TagVendor vendor) {
    for (const attributes::TagRow& row : attributes::tagRows) {
        if (row.vendor != vendor || !record.isPresent(row.tag)) {
            continue;
        }
        bytes.uleb(row.number);
        if (row.form == attributes::TagForm_Text) {
            bytes.text(record.getText(row.tag));
        } else {
            bytes.uleb(record.getNumber(row.tag));
        }
    }
}

void encodeCompatibility(RecordBytes& bytes, const BuildAttributes& record) {
    if (record.m_CompatibilityTags != nullptr) {
        for (const attributes::CompatibilityTag& entry : *record.m_CompatibilityTags) {
            bytes.uleb(attributes::TagNumber_compatibility);
            bytes.uleb(entry.flag);
            bytes.text(entry.vendorName);
        }
    }
    if (record.m_AlsoCompatibilityTags != nullptr) {
        for (const attributes::AlsoCompatibilityTag& entry : *record.m_AlsoCompatibilityTags) {
            bytes.uleb(attributes::TagNumber_also_compatible_with);
            bytes.uleb(entry.getTag());
            if (entry.hasNumber()) {
                bytes.uleb(entry.getNumber());
            }
            bytes.text(entry.hasText() ? entry.getText() : "");
        }
    }
}

// What the two vendors that have a meaning say of an object.
struct Statement {
    Bytes qeabi;
    Bytes qel;
};

Statement encode(const BuildAttributes& record) {
    RecordBytes qeabi(false, true);
    encodeCompatibility(qeabi, record);
    encodeSlots(qeabi, record, attributes::TagVendor_Qeabi);
    RecordBytes qel(false, true);
    encodeSlots(qel, record, attributes::TagVendor_Qel);
    return {Bytes(qeabi.data(), qeabi.data() + qeabi.size()),
            Bytes(qel.data(), qel.data() + qel.size())};
}

bool saysTheSame(const Statement& statement, const BuildAttributes& record) {
    BuildAttributes decoded;
    if (!statement.qeabi.empty()) {
        QeabiBuildAttributesDecodingParser(&decoded).parse(
            statement.qeabi.data(), static_cast<uint32_t>(statement.qeabi.size()));
    }
    if (!statement.qel.empty()) {
        QelBuildAttributesDecodingParser(&decoded).parse(
            statement.qel.data(), static_cast<uint32_t>(statement.qel.size()));
    }
    return decoded.equals(record);
}

// --- Objects

class AttributesWriter {
public:
    explicit AttributesWriter(AuxiliaryState& state) : m_State(state) {}

    RecordBytes write() {
        gather();
        RecordBytes bytes = m_State.makeBytes();
        bytes.byte(formatVersion);
        for (const std::string& vendor : m_VendorOrder) {
            writeSubsection(bytes, vendor, m_Vendors[vendor]);
        }
        return bytes;
    }

private:
    // A body, and all objects of one scope that it is for.
    struct Part {
        Scope scope;
        const Bytes* body;
        std::vector<uint32_t> indexes;
    };
    using Parts = std::vector<Part>;

    void gather() {
        add(m_State.m_Module, Scope_File, 0);
        for (uint32_t i = 1; i < m_State.m_Module.getSectionCount(); ++i) {
            add(*m_State.m_Module.getSection(i), Scope_Section, i);
        }
        for (uint32_t i = 1; i <= m_State.m_Module.getSymbolCount(); ++i) {
            add(*m_State.m_Module.getSymbol(i), Scope_Symbol, i);
        }
    }

    void add(const ObjectWithBuildAttributes& object, Scope scope, uint32_t index) {
        if (!object.hasBuildAttributes()) {
            return;
        }
        const BuildAttributesBlock* const qeabi =
            object.findBuildAttributesBlock(attributes::VendorName_Qeabi);
        const BuildAttributesBlock* const qel =
            object.findBuildAttributesBlock(attributes::VendorName_Qel);
        const Statement& statement = statementOf({object.getOwnBuildAttributes(), qeabi, qel});
        addBody(attributes::VendorName_Qeabi, statement.qeabi, scope, index);
        addBody(attributes::VendorName_Qel, statement.qel, scope, index);
        for (uint32_t i = 0; i < object.getBuildAttributesBlockCount(); ++i) {
            const BuildAttributesBlock* const block = object.getBuildAttributesBlock(i);
            if (block != qeabi && block != qel) {
                addBody(block->getVendorName(), statementOf({nullptr, block, nullptr}).qeabi, scope,
                        index);
            }
        }
    }

    // Objects share records and blocks, so each combination is looked at once.
    struct Stated {
        const BuildAttributes* record;
        const BuildAttributesBlock* qeabi;
        const BuildAttributesBlock* qel;

        bool operator<(const Stated& other) const {
            return std::tie(record, qeabi, qel) < std::tie(other.record, other.qeabi, other.qel);
        }
    };

    const Statement& statementOf(const Stated& stated) {
        const auto [place, isNew] = m_Statements.try_emplace(stated);
        if (isNew) {
            place->second = {bytesOf(stated.qeabi), bytesOf(stated.qel)};
            if (stated.record != nullptr && !saysTheSame(place->second, *stated.record)) {
                place->second = encode(*stated.record);
            }
        }
        return place->second;
    }

    void addBody(const char* vendor, const Bytes& body, Scope scope, uint32_t index) {
        if (body.empty()) {
            return;
        }
        const auto [place, isNew] = m_Vendors.try_emplace(vendor);
        if (isNew) {
            m_VendorOrder.emplace_back(vendor);
        }
        Parts& parts = place->second;
        const auto [part, isFirst] = m_PartNumbers.try_emplace({scope, &body}, parts.size());
        if (isFirst) {
            parts.push_back({scope, &body, {}});
        }
        parts[part->second].indexes.push_back(index);
    }

    void writeSubsection(RecordBytes& bytes, const std::string& vendor, const Parts& parts) {
        const uint64_t start = bytes.size();
        bytes.word(0);
        bytes.text(vendor.c_str());
        for (const Part& part : parts) {
            const uint64_t partStart = bytes.size();
            bytes.uleb(part.scope);
            const uint64_t sizePlace = bytes.size();
            bytes.word(0);
            if (part.scope != Scope_File) {
                for (const uint32_t index : part.indexes) {
                    bytes.uleb(index);
                }
                bytes.byte(0);
            }
            bytes.raw(part.body->data(), part.body->size());
            bytes.setWord(sizePlace, static_cast<uint32_t>(bytes.size() - partStart));
        }
        bytes.setWord(start, static_cast<uint32_t>(bytes.size() - start));
    }

    AuxiliaryState& m_State;
    std::map<Stated, Statement> m_Statements;
    std::map<std::string, Parts, std::less<>> m_Vendors;
    std::vector<std::string> m_VendorOrder;
    // Where a body stands in its vendor's parts. Different vendors have different bodies.
    std::map<std::pair<Scope, const Bytes*>, size_t> m_PartNumbers;
};

} // namespace

// What symbols state in their names needs no section.
bool needsAttributesSection(ObjectModule& objectModule) {
    if ((objectModule.getProperties() & ModuleProperty_SymbolWithBuildAttributes) != 0) {
        return false;
    }
    const auto states = [](const ObjectWithBuildAttributes* object) {
        return object->hasBuildAttributes();
    };
    return objectModule.hasBuildAttributes() ||
           std::any_of(objectModule.getSections().begin(), objectModule.getSections().end(),
                       states) ||
           std::any_of(objectModule.getSymbols().begin(), objectModule.getSymbols().end(), states);
}

// An empty section that has nothing to tell stays empty.
void fillBuildAttributes(AuxiliaryState& state) {
    if (state.m_Attributes == nullptr) {
        return;
    }
    const RecordBytes bytes = AttributesWriter(state).write();
    if (bytes.size() != sizeof formatVersion || state.m_Attributes->getContentsSize() != 0) {
        state.setTable(*state.m_Attributes, bytes, state.m_Attributes->getEntrySize());
    }
    state.m_Attributes->setIsUnderstood(true);
}

} // namespace elfext
