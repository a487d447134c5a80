// A text of any content, loaded by the guarded document and by TinyXML alone. Both have to make the
// same of it, unless it goes beyond the limits, which are low enough to be reached.

#include <algorithm>
#include <new>
#include <string>

#include <sys/mman.h>

#include "Fuzzing.h"
#include "common/XmlDocument.h"

namespace {

constexpr std::size_t kPage = 4096;
thread_local bool isFenced = false;
// One at a time is all that is ever needed.
thread_local char* fencedArray = nullptr;
thread_local char* fencedPages = nullptr;
thread_local std::size_t fencedSize = 0;

void* makeFenced(std::size_t size) {
    const std::size_t readable = (size + kPage - 1) / kPage * kPage;
    fencedSize = readable + kPage;
    fencedPages = static_cast<char*>(
        mmap(nullptr, fencedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(fencedPages + readable, kPage, PROT_NONE);
    fencedArray = fencedPages + readable - size;
    return fencedArray;
}

/// While one lives, each array that this thread makes with `new[]` ends where memory ends that may
/// be read: whoever reads behind it, in whatever library, dies of SIGSEGV.
class Fence {
public:
    Fence() { isFenced = true; }
    ~Fence() { isFenced = false; }
    Fence(const Fence&) = delete;
    Fence& operator=(const Fence&) = delete;
};

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
        const Fence fence;
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

void* operator new[](std::size_t size) {
    if (isFenced && fencedArray == nullptr) {
        return makeFenced(size);
    }
    void* const array = std::malloc(size);
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

void operator delete[](void* array) noexcept {
    if (array != nullptr && array == fencedArray) {
        fencedArray = nullptr;
        munmap(fencedPages, fencedSize);
        return;
    }
    std::free(array);
}

void operator delete[](void* array, std::size_t) noexcept { operator delete[](array); }

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
