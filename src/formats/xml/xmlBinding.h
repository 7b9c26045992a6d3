#pragma once

#include <string>
#include <vector>

#include "formats/xml/xmlInterfaces.h"

/// The one implementation of IXmlBinding: a record that the reader walks.
class XmlBinding : public IXmlBinding {
 public:
  struct Child {
    XmlBinding* binding;  // not owned
    int occurrence;       // KVN_XML_ONCE ...
  };
  struct Attribute {
    std::string name;
    bool required;
  };

  /// Without a name it describes no element.
  XmlBinding(const char* theName, int theOptions, IXmlHandler* theHandler = nullptr)
      : handler(theHandler), name(theName != nullptr ? theName : ""), options(theOptions) {}
  XmlBinding(const XmlBinding&) = delete;
  XmlBinding& operator=(const XmlBinding&) = delete;
  ~XmlBinding() override = default;

  /// `binding` must have been made by this system.
  void AddChild(IXmlBinding& binding, int occurrence) override;
  void AddAttribute(const char* attribute, bool required) override;
  void Release() override { delete this; }

  /// Position among the children, -1 for a name that isn't there.
  int FindChild(const char* child) const;
  bool HasAttribute(const char* attribute) const;

  IXmlHandler* handler;  // not owned; null when nobody takes the content
  std::string name;
  std::vector<Child> children;
  std::vector<Attribute> attributes;
  int options;  // KVN_XML_TOLERANT ...
};
