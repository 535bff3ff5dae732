#include "jet/table/PropertyBlob.h"

#include <algorithm>
#include <array>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

using base::Bytes;
using base::ByteView;

constexpr std::array<std::uint8_t, 4> kBlobMark = {'M', 'R', '2', 0};
constexpr std::uint16_t kNamesKind = 0x80;
constexpr std::uint16_t kObjectKind = 0;
constexpr std::uint16_t kColumnKind = 1;
constexpr std::size_t kChunkHeaderBytes = 6;
constexpr std::size_t kValueHeaderBytes = 8;

base::Text unitsOf(ByteView bytes) {
    base::Text text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        text.push_back(static_cast<char16_t>(bytes.u16(i)));
    return text;
}

void readNames(ByteView body, std::vector<base::Text>& names) {
    while (!body.empty()) {
        const std::size_t byteCount = body.u16(0);
        names.push_back(unitsOf(body.slice(2, byteCount)));
        body = body.from(2 + byteCount);
    }
}

Property readValue(ByteView value, const std::vector<base::Text>& names) {
    Property property;
    property.designFlag = value.u8(2);
    property.type = value.u8(3);
    const std::size_t number = value.u16(4);
    if (number >= names.size()) throw base::ByteRangeError(number, 1, names.size());
    property.name = names[number];
    const auto data = value.slice(kValueHeaderBytes, value.u16(6)).bytes();
    property.data.assign(data.begin(), data.end());
    return property;
}

PropertyOwner readOwner(std::uint16_t kind, ByteView body, const std::vector<base::Text>& names) {
    PropertyOwner owner;
    owner.kind = kind;
    const std::size_t ownerBytes = body.u32(0);
    owner.name = unitsOf(body.slice(6, body.u16(4)));
    for (ByteView rest = body.from(ownerBytes); !rest.empty();) {
        const std::size_t size = std::max<std::size_t>(rest.u16(0), kValueHeaderBytes);
        owner.properties.push_back(readValue(rest.slice(0, size), names));
        rest = rest.from(size);
    }
    return owner;
}

void readChunks(ByteView bytes, PropertyBlob& blob) {
    for (ByteView rest = bytes.from(kBlobMark.size()); !rest.empty();) {
        const std::size_t size = std::max<std::size_t>(rest.u32(0), kChunkHeaderBytes);
        const std::uint16_t kind = rest.u16(4);
        const ByteView body = rest.slice(kChunkHeaderBytes, size - kChunkHeaderBytes);
        if (kind == kNamesKind) {
            readNames(body, blob.names);
        } else if (kind == kObjectKind || kind == kColumnKind) {
            blob.owners.push_back(readOwner(kind, body, blob.names));
        } else {
            blob.unknownChunks.push_back({kind, {body.bytes().begin(), body.bytes().end()}});
        }
        rest = rest.from(size);
    }
}

void appendU16(Bytes& bytes, std::size_t value) {
    base::appendLittleEndian(bytes, value, 2);
}

void appendU32(Bytes& bytes, std::size_t value) {
    base::appendLittleEndian(bytes, value, 4);
}

void appendName(Bytes& bytes, base::TextView name) {
    appendU16(bytes, 2 * name.size());
    for (const char16_t unit : name)
        appendU16(bytes, unit);
}

void appendChunk(Bytes& bytes, std::uint16_t kind, const Bytes& body) {
    appendU32(bytes, body.size() + kChunkHeaderBytes);
    appendU16(bytes, kind);
    bytes.insert(bytes.end(), body.begin(), body.end());
}

std::size_t numberOf(const std::vector<base::Text>& names, const base::Text& name) {
    return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

Bytes encodeOwner(const PropertyOwner& owner, const std::vector<base::Text>& names) {
    Bytes body;
    appendU32(body, 6 + 2 * owner.name.size());
    appendName(body, owner.name);
    for (const Property& property : owner.properties) {
        appendU16(body, kValueHeaderBytes + property.data.size());
        body.push_back(property.designFlag);
        body.push_back(property.type);
        appendU16(body, numberOf(names, property.name));
        appendU16(body, property.data.size());
        body.insert(body.end(), property.data.begin(), property.data.end());
    }
    return body;
}

}  // namespace

bool Property::asBoolean() const {
    return std::any_of(data.begin(), data.end(), [](std::uint8_t byte) { return byte != 0; });
}

base::Text Property::asText() const {
    return unitsOf(ByteView{data});
}

PropertyBlob PropertyBlob::read(std::span<const std::uint8_t> bytes, RowPointer place) {
    PropertyBlob blob;
    if (bytes.empty()) return blob;
    if (bytes.size() < kBlobMark.size() || !std::equal(kBlobMark.begin(), kBlobMark.end(), bytes.begin())) {
        throw damagedRow(place, u"Die Eigenschaften beginnen nicht mit ihrem Kennzeichen");
    }
    onPage(place.page, [&] { readChunks(ByteView{bytes}, blob); });
    return blob;
}

Bytes PropertyBlob::encode() const {
    std::vector<base::Text> allNames = names;
    for (const PropertyOwner& owner : owners) {
        for (const Property& property : owner.properties) {
            if (numberOf(allNames, property.name) == allNames.size()) allNames.push_back(property.name);
        }
    }
    Bytes nameList;
    for (const base::Text& name : allNames)
        appendName(nameList, name);
    Bytes bytes(kBlobMark.begin(), kBlobMark.end());
    appendChunk(bytes, kNamesKind, nameList);
    for (const PropertyOwner& owner : owners)
        appendChunk(bytes, owner.kind, encodeOwner(owner, allNames));
    for (const Chunk& chunk : unknownChunks)
        appendChunk(bytes, chunk.kind, chunk.body);
    return bytes;
}

const Property* PropertyBlob::find(base::TextView column, base::TextView name) const {
    for (const PropertyOwner& owner : owners) {
        const bool isWanted =
            column.empty() ? owner.kind == kObjectKind : owner.kind == kColumnKind && textsAreEqual(owner.name, column);
        if (!isWanted) continue;
        for (const Property& property : owner.properties) {
            if (base::equalsIgnoringAsciiCase(property.name, name)) return &property;
        }
    }
    return nullptr;
}

bool PropertyBlob::isRequired(base::TextView column) const {
    const Property* property = find(column, u"Required");
    return property != nullptr && property->asBoolean();
}

bool PropertyBlob::allowsZeroLength(base::TextView column) const {
    const Property* property = find(column, u"AllowZeroLength");
    return property != nullptr && property->asBoolean();
}

}  // namespace jet
