#include "formats/xml/xmlBinding.h"

void XmlBinding::AddChild(IXmlBinding& binding, int occurrence) {
  children.push_back({static_cast<XmlBinding*>(&binding), occurrence});
}

void XmlBinding::AddAttribute(const char* attribute, bool required) {
  if (attribute != nullptr) attributes.push_back({attribute, required});
}

int XmlBinding::FindChild(const char* child) const {
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (children[i].binding->name == child) return static_cast<int>(i);
  }
  return -1;
}

bool XmlBinding::HasAttribute(const char* attribute) const {
  for (const Attribute& known : attributes) {
    if (known.name == attribute) return true;
  }
  return false;
}
