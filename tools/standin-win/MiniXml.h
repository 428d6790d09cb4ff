#pragma once

#include <string>
#include <utility>
#include <vector>

namespace standin {

// An element of a small XML document: its name, attributes in document
// order and child elements. Text, comments and processing instructions are
// dropped; the tool reads attributes only.
struct XmlElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<XmlElement> children;

    // The attribute's value; empty when absent.
    std::string attribute(const char* key) const;
    // The first child element of that name; null when there is none.
    const XmlElement* child(const char* key) const;
};

// Parses a whole document: the prolog (declaration, comments, document
// type) and one root element. False with a message when it is not XML.
bool parseXml(const std::string& text, XmlElement* root, std::string* error);

} // namespace standin
