#include "formats/xml/vustaLoader.h"

#include <new>
#include <sstream>
#include <string>

IXmlVustaLoader* NewVustaLoader(IXmlReader& reader, KVN_network& /*network*/,
                                const XmlNodeHandles& /*handles*/) {
  return new (std::nothrow) XmlVustaLoader(reader);
}

XmlVustaLoader::XmlVustaLoader(IXmlReader& theReader) : reader(theReader) {
  root = &Make("vusta",
               "version! app name! faultnameformat arccolor costarccolor arcwidth costarcwidth",
               KVN_XML_TOLERANT);
  node = &MakeNode();
  submodel = &Make("submodel", "id!");
  textBox = &MakeTextBox();
  AddLooks(*submodel);
  submodel->AddChild(Make("window"), KVN_XML_ONCE);
  AddContent(*submodel);
  root->AddChild(Make("comment"), KVN_XML_ONCE);
  root->AddChild(Make("arccomment", "parent! child! order cost"), KVN_XML_MANY);
  root->AddChild(Make("arcformat", "parent! child! order cost width! color!"), KVN_XML_MANY);
  root->AddChild(Make("diagautoformat", "target! targetnr! observation! observationnr! auxiliary!"),
                 KVN_XML_ONCE);
  root->AddChild(Make("qualcolors", "left! center! right! blend"), KVN_XML_ONCE);
  root->AddChild(Make("plate", "leftwidth! rightwidth!"), KVN_XML_ONCE);
  AddContent(*root);
}

IXmlBinding& XmlVustaLoader::Make(const char* name, const char* attributes, int options) {
  bindings.emplace_back(reader.CreateBinding(name, options));
  IXmlBinding& made = *bindings.back();
  std::istringstream words(attributes);
  for (std::string word; words >> word;) {
    const bool isRequired = word.back() == '!';
    if (isRequired) word.pop_back();
    made.AddAttribute(word.c_str(), isRequired);
  }
  return made;
}

IXmlBinding& XmlVustaLoader::MakeFont(bool hasAlignment) {
  return Make("font", hasAlignment ? "name! size! color! bold italic align"
                                   : "name! size! color! bold italic");
}

void XmlVustaLoader::AddLooks(IXmlBinding& object) {
  object.AddChild(Make("name"), KVN_XML_REQUIRED);
  object.AddChild(Make("interior", "color!"), KVN_XML_REQUIRED);
  object.AddChild(Make("outline", "color! width"), KVN_XML_REQUIRED);
  object.AddChild(MakeFont(/*hasAlignment=*/false), KVN_XML_REQUIRED);
  object.AddChild(Make("position"), KVN_XML_REQUIRED);
  object.AddChild(Make("comment"), KVN_XML_ONCE);
}

void XmlVustaLoader::AddContent(IXmlBinding& container) {
  for (IXmlBinding* child : {node, submodel, textBox}) container.AddChild(*child, KVN_XML_MANY);
}

IXmlBinding& XmlVustaLoader::MakeNode() {
  IXmlBinding& made = Make("node", "id! faultnameformat");
  AddLooks(made);
  made.AddChild(Make("barchart", "active width height"), KVN_XML_ONCE);
  made.AddChild(Make("defcomment", "row! col!"), KVN_XML_MANY);
  made.AddChild(Make("costcomment", "row! col!"), KVN_XML_MANY);
  made.AddChild(MakeState(), KVN_XML_MANY);
  made.AddChild(Make("link", "title! path!"), KVN_XML_MANY);
  made.AddChild(Make("question"), KVN_XML_ONCE);
  return made;
}

IXmlBinding& XmlVustaLoader::MakeState() {
  IXmlBinding& made = Make("state", "id! globalid faultname");
  made.AddChild(Make("fix"), KVN_XML_ONCE);
  made.AddChild(Make("comment"), KVN_XML_ONCE);
  made.AddChild(Make("link", "title! path!"), KVN_XML_MANY);
  return made;
}

IXmlBinding& XmlVustaLoader::MakeTextBox() {
  IXmlBinding& made = Make("textbox");
  made.AddChild(MakeFont(/*hasAlignment=*/true), KVN_XML_REQUIRED);
  made.AddChild(Make("position"), KVN_XML_REQUIRED);
  made.AddChild(Make("comment"), KVN_XML_ONCE);
  made.AddChild(Make("caption"), KVN_XML_REQUIRED);
  return made;
}
