// A text of any content, loaded by the guarded document and by TinyXML alone. Both have to make the
// same of it, unless it goes beyond the limits, which are low enough to be reached.

#include <algorithm>

#include "FencedArrays.h"
#include "Fuzzing.h"
#include "common/XmlDocument.h"

namespace {

constexpr common::XmlLimits kLimits{4, 3};

/// How deep TinyXML went, and how many attributes it searched. A tree tells both, even that of a
/// text which TinyXML gave up.
common::XmlLimits reachedIn(const TiXmlNode& node) {
    common::XmlLimits reached{0, 0};
    for (const TiXmlNode* child = node.FirstChild(); child != nullptr;
         child = child->NextSibling()) {
        const common::XmlLimits below = reachedIn(*child);
        reached.depth = std::max(reached.depth, below.depth);
        reached.attributes = std::max(reached.attributes, below.attributes);
    }
    if (const TiXmlElement* const element = node.ToElement()) {
        std::size_t attributes = 0;
        for (const TiXmlAttribute* attribute = element->FirstAttribute(); attribute != nullptr;
             attribute = attribute->Next()) {
            ++attributes;
        }
        ++reached.depth;
        reached.attributes = std::max(reached.attributes, attributes);
    }
    return reached;
}

std::string textOf(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str() + std::to_string(document.ErrorId());
}

void compare(const std::string& text) {
    common::XmlDocument guarded("", kLimits);
    bool isLoaded = false;
    {
        const fenced_arrays::Fence fence;
        isLoaded = guarded.load(text);
    }

    TiXmlDocument bare;
    const std::string end = text.substr(text.size() - std::min<std::size_t>(text.size(), 3));
    const bool mayBeCutOff =
        std::any_of(end.begin(), end.end(), [](signed char byte) { return byte < 0; });
    std::string copy =
        text + std::string(mayBeCutOff ? 3 : 0, '\0'); // TinyXML would read behind it
    std::FILE* const file = fmemopen(copy.data(), copy.size(), "rb");
    const bool isLoadedBarely = bare.LoadFile(file, TIXML_ENCODING_UNKNOWN);
    std::fclose(file);

    const common::XmlLimits reached = reachedIn(bare);
    const bool isWithin =
        reached.depth <= kLimits.depth && reached.attributes <= kLimits.attributes;
    if (!isLoaded && !guarded.Error()) {
        require(!isLoadedBarely || !isWithin, "what is within the limits is loaded");
        return;
    }
    require(isWithin, "what is beyond the limits is not parsed");
    require(isLoaded == isLoadedBarely && textOf(guarded) == textOf(bare), "both read the same");
    require(guarded.TabSize() == 0 ||
                (guarded.ErrorRow() == bare.ErrorRow() && guarded.ErrorCol() == bare.ErrorCol()),
            "both place an error the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    compare(text);
    std::string withCarriageReturns;
    for (const char byte : text) {
        withCarriageReturns.append(byte == '\n' ? 1 : 0, '\r').push_back(byte);
    }
    compare(withCarriageReturns);
    return 0;
}
