// Reading one alarm mapping file. TinyXML parses the whole document first, so a file that is not
// well formed maps nothing. After that each mapping element stands for itself: one that is wrong
// costs no other. Elements of other names, elements further down and other attributes are not
// looked at.

#include "xmlconf/MappingFileReader.h"

#include <utility>

#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolq::xmlconf {

namespace {

/// Calls `onClass` for each class of a comma-separated list without its blanks: "A, ,B" holds "A",
/// "" and "B". Nothing follows a final comma, and a list of blanks alone holds no class. Only the
/// space counts as a blank: a tab is part of a class.
template <typename OnClass> void forEachClass(const char* classes, OnClass onClass) {
    std::string moClass;
    for (; *classes != '\0'; ++classes) {
        if (*classes == ',') {
            onClass(moClass);
            moClass.clear();
        } else if (*classes != ' ') {
            moClass += *classes;
        }
    }
    if (!moClass.empty()) {
        onClass(moClass);
    }
}

void readMapping(const TiXmlElement& element, MappingFileObserverI& observer) {
    int faultId = 0;
    int minorType = 0;
    if (element.QueryIntAttribute(kFaultId, &faultId) != TIXML_SUCCESS ||
        element.QueryIntAttribute(kMinorType, &minorType) != TIXML_SUCCESS) {
        observer.onSkipped(element);
        return;
    }
    // The same 32 bits: a file writes numbers from 2^31 on as negative ones.
    const auto storedFaultId = static_cast<std::uint32_t>(faultId);
    const auto storedMinorType = static_cast<std::uint32_t>(minorType);
    const char* const classes = element.Attribute(kMoClass);
    if (classes == nullptr) {
        observer.onMappingWithoutClass(element, storedFaultId, storedMinorType);
        return;
    }
    observer.onClassList(element, storedFaultId, storedMinorType, classes);
    forEachClass(classes, [&](const std::string& moClass) {
        observer.onMapping(element, storedFaultId, storedMinorType, moClass);
    });
}

} // namespace

bool readMappingFile(const std::string& fileName, MappingFileObserverI& observer) {
    common::XmlDocument document(fileName);
    document.SetTabSize(observer.wantsPlaces() ? 1 : 0);
    std::string text;
    if (common::readRegularFile(fileName, text.max_size(), text) != 0 ||
        !document.load(std::move(text))) {
        observer.onNotLoaded(document);
        return false;
    }
    const TiXmlElement* const root = document.FirstChildElement();
    if (root == nullptr) {
        observer.onNoRoot();
        return false;
    }
    observer.onRoot(*root);
    for (const TiXmlElement* element = root->FirstChildElement(kMapping); element != nullptr;
         element = element->NextSiblingElement(kMapping)) {
        readMapping(*element, observer);
    }
    return true;
}

} // namespace dolq::xmlconf
