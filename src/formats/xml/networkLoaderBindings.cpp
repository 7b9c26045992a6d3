// What may stand where in a native XML file.

#include "definitions/nodeDefinition.h"
#include "formats/xml/networkLoader.h"

/// A node element: hands its start and end on together with the kind.
class XmlNetLoader::NodeBinding : public XmlHandler<XmlNetLoader> {
 public:
  NodeBinding(const Kind& theKind, bool isTemporalDefinition, XmlNetLoader& theLoader)
      : XmlHandler(theKind.element, KVN_XML_INHERIT, theLoader),
        kind(theKind),
        isTemporal(isTemporalDefinition) {
    handler = this;
  }

  void OnStart(IXmlReader&) override {
    if (isTemporal) {
      loader.StartTemporal(kind);
    } else {
      loader.StartNode(kind);
    }
  }
  void OnEnd(IXmlReader&) override {
    if (isTemporal) {
      loader.EndTemporal();
    } else {
      loader.EndNode(kind);
    }
  }

 private:
  const Kind& kind;
  bool isTemporal;
};

/// Kinds without a class are refused when their element starts, so their children are only
/// described: nobody takes the content.
const XmlNetLoader::Kind XmlNetLoader::kKinds[] = {
    {"cpt",
     KVN_TYPE_CPT,
     /*hasStates=*/true,
     /*isTemporal=*/true,
     &XmlNetLoader::FinishCpt,
     {{"probabilities", KVN_XML_REQUIRED, &XmlNetLoader::StartNumbers, nullptr,
       &XmlNetLoader::AddNumberWord}}},
    {"deterministic",
     KVN_TYPE_TRUTHTABLE,
     true,
     true,
     &XmlNetLoader::FinishTruthTable,
     {{"resultingstates", KVN_XML_REQUIRED, nullptr, nullptr, &XmlNetLoader::AddResultingState}}},
    {"decision", KVN_TYPE_LIST, true, false, nullptr, {}},
    {"utility",
     KVN_TYPE_TABLE,
     false,
     false,
     &XmlNetLoader::FinishUtility,
     {{"utilities", KVN_XML_REQUIRED, &XmlNetLoader::StartNumbers, nullptr,
       &XmlNetLoader::AddNumberWord}}},
    {"mau",
     KVN_TYPE_MAU,
     false,
     false,
     &XmlNetLoader::FinishMau,
     {{"weights", KVN_XML_REQUIRED, nullptr, nullptr, &XmlNetLoader::AddWeightWord}}},
    {"maux",
     KVN_TYPE_MAU,
     false,
     false,
     &XmlNetLoader::FinishMauFormulas,
     {{"expression", KVN_XML_ONE_OR_MORE, nullptr, &XmlNetLoader::EndExpression, nullptr}}},
    {"equation", KVN_TYPE_EQUATION, false, false, &XmlNetLoader::FinishEquation, {}},
    {"cast",
     KVN_TYPE_CAST,
     false,
     false,
     &XmlNetLoader::FinishCast,
     {{"baseline", KVN_XML_REQUIRED, nullptr, &XmlNetLoader::EndBaseline, nullptr},
      {"pweights", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddPositiveWord},
      {"nweights", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddNegativeWord}}},
    {"demorgan",
     KVN_TYPE_DEMORGAN,
     false,
     true,
     &XmlNetLoader::FinishDemorgan,
     {{"priorbelief", KVN_XML_REQUIRED, nullptr, &XmlNetLoader::EndPriorBelief, nullptr},
      {"weights", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddWeightWord},
      {"types", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddTypeWord}}},
    {"noisymax",
     KVN_TYPE_NOISY_MAX,
     true,
     true,
     &XmlNetLoader::FinishNoisyMax,
     {{"strengths", KVN_XML_ONCE, &XmlNetLoader::StartStrengths, nullptr,
       &XmlNetLoader::AddIntegerWord},
      {"parameters", KVN_XML_ONCE, &XmlNetLoader::StartParameters, nullptr,
       &XmlNetLoader::AddNumberWord}}},
    {"noisyadder",
     KVN_TYPE_NOISY_ADDER,
     true,
     true,
     &XmlNetLoader::FinishNoisyAdder,
     {{"dstates", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddIntegerWord},
      {"weights", KVN_XML_ONCE, nullptr, nullptr, &XmlNetLoader::AddWeightWord},
      {"parameters", KVN_XML_ONCE, &XmlNetLoader::StartParameters, nullptr,
       &XmlNetLoader::AddNumberWord}}},
};

XmlBinding& XmlNetLoader::Make(const char* name, Callback start, Callback end, Callback text,
                               int options) {
  bindings.push_back(std::make_unique<Handler>(name, options, *this, start, end, text));
  return *bindings.back();
}

XmlBinding& XmlNetLoader::MakeRoot(std::intptr_t loadOptions) {
  XmlBinding& root = Make("ormel", &XmlNetLoader::StartNetwork, nullptr, nullptr, KVN_XML_TOLERANT);
  root.AddAttribute("version", /*required=*/true);
  root.AddAttribute("id", true);
  for (const char* name : {"numsamples", "discsamples", "discavoidzero"}) {
    root.AddAttribute(name, false);
  }
  XmlBinding& properties = Make("properties");
  XmlBinding& property =
      Make("property", &XmlNetLoader::StartProperty, &XmlNetLoader::EndNetworkProperty);
  property.AddAttribute("id", true);
  properties.AddChild(property, KVN_XML_MANY);
  for (XmlBinding* child : {&MakeAlgorithms(), &properties, &MakeNodes(), &MakeCosts(),
                            &MakeTemporal(), &MakeCases(), &MakeExtensions(loadOptions)}) {
    root.AddChild(*child, KVN_XML_ONCE);
  }
  return root;
}

XmlBinding& XmlNetLoader::MakeAlgorithms() {
  XmlBinding& algorithms = Make("algparams");
  XmlBinding& epis = Make("epis", &XmlNetLoader::StartEpis);
  for (const char* name :
       {"proplen", "numstates1", "numstates2", "numstates3", "eps1", "eps2", "eps3", "eps4"}) {
    epis.AddAttribute(name, true);
  }
  algorithms.AddChild(epis, KVN_XML_ONCE);
  return algorithms;
}

XmlBinding& XmlNetLoader::MakeNodes() {
  XmlBinding& nodes = Make("nodes");
  for (const Kind& kind : kKinds) nodes.AddChild(MakeNode(kind), KVN_XML_MANY);
  return nodes;
}

XmlBinding& XmlNetLoader::MakeNode(const Kind& kind) {
  bindings.push_back(std::make_unique<NodeBinding>(kind, /*isTemporalDefinition=*/false, *this));
  XmlBinding& node = *bindings.back();
  node.AddAttribute("id", true);
  for (const char* name : {"target", "diagtype", "dynamic", "ranked", "mandatory"}) {
    node.AddAttribute(name, false);
  }
  XmlBinding& property =
      Make("property", &XmlNetLoader::StartProperty, &XmlNetLoader::EndNodeProperty);
  property.AddAttribute("id", true);
  node.AddChild(property, KVN_XML_MANY);
  node.AddChild(Make("parents", nullptr, nullptr, &XmlNetLoader::AddParentWord), KVN_XML_ONCE);
  if (kind.hasStates) node.AddChild(MakeState(), KVN_XML_ONE_OR_MORE);
  if (kind.type == KVN_TYPE_EQUATION) MakeEquationChildren(node);
  AddChildren(node, kind);
  return node;
}

void XmlNetLoader::AddChildren(XmlBinding& node, const Kind& kind) {
  if (kind.type == KVN_TYPE_NOISY_ADDER) node.AddAttribute("function", false);
  for (const Child& child : kind.children) {
    if (child.element == nullptr) break;
    node.AddChild(Make(child.element, child.start, child.end, child.text), child.occurrence);
  }
}

XmlBinding& XmlNetLoader::MakeState() {
  XmlBinding& state = Make("state", &XmlNetLoader::StartState);
  state.AddAttribute("id", true);
  for (const char* name : {"label", "default", "fault"}) state.AddAttribute(name, false);
  return state;
}

void XmlNetLoader::MakeEquationChildren(XmlBinding& node) {
  XmlBinding& text = Make("definition", &XmlNetLoader::StartFormula, &XmlNetLoader::EndFormula);
  text.AddAttribute("lower", false);
  text.AddAttribute("upper", false);
  XmlBinding& interval = Make("interval", &XmlNetLoader::StartInterval);
  interval.AddAttribute("id", true);
  interval.AddAttribute("upper", true);
  XmlBinding& discretization = Make("discretization");
  discretization.AddChild(interval, KVN_XML_ONE_OR_MORE);
  node.AddChild(text, KVN_XML_REQUIRED);
  node.AddChild(discretization, KVN_XML_ONCE);
}

XmlBinding& XmlNetLoader::MakeCosts() {
  XmlBinding& costs = Make("observationcost");
  XmlBinding& node = Make("node", &XmlNetLoader::StartCostNode, &XmlNetLoader::EndCostNode);
  node.AddAttribute("id", true);
  node.AddChild(Make("parents", nullptr, nullptr, &XmlNetLoader::AddParentWord), KVN_XML_ONCE);
  node.AddChild(Make("cost", &XmlNetLoader::StartNumbers, nullptr, &XmlNetLoader::AddCostWord),
                KVN_XML_REQUIRED);
  costs.AddChild(node, KVN_XML_MANY);
  return costs;
}

XmlBinding& XmlNetLoader::MakeTemporal() {
  XmlBinding& dynamic = Make("dynamic", &XmlNetLoader::StartDynamic);
  dynamic.AddAttribute("numslices", true);
  for (const Kind& kind : kKinds) {
    if (kind.isTemporal) dynamic.AddChild(MakeTemporalNode(kind), KVN_XML_MANY);
  }
  return dynamic;
}

XmlBinding& XmlNetLoader::MakeTemporalNode(const Kind& kind) {
  bindings.push_back(std::make_unique<NodeBinding>(kind, /*isTemporalDefinition=*/true, *this));
  XmlBinding& node = *bindings.back();
  node.AddAttribute("id", true);
  node.AddAttribute("order", true);
  node.AddChild(Make("parents", nullptr, nullptr, &XmlNetLoader::AddParentWord), KVN_XML_REQUIRED);
  AddChildren(node, kind);
  return node;
}

XmlBinding& XmlNetLoader::MakeCases() {
  XmlBinding& evidence = Make("evidence");
  evidence.AddAttribute("node", true);
  evidence.AddAttribute("slice", false);
  evidence.AddAttribute("state", true);
  XmlBinding& target = Make("target");
  target.AddAttribute("node", true);
  XmlBinding& entry = Make("case", &XmlNetLoader::StartCase);
  entry.AddAttribute("name", true);
  for (const char* name : {"category", "created", "modified"}) entry.AddAttribute(name, false);
  entry.AddChild(Make("description"), KVN_XML_ONCE);
  entry.AddChild(evidence, KVN_XML_MANY);
  entry.AddChild(target, KVN_XML_MANY);
  XmlBinding& cases = Make("cases");
  cases.AddChild(entry, KVN_XML_MANY);
  return cases;
}

XmlBinding& XmlNetLoader::MakeExtensions(std::intptr_t loadOptions) {
  XmlBinding& extensions = Make("extensions", nullptr, nullptr, nullptr, KVN_XML_TOLERANT);
  if (loadOptions == KVN_XML_NO_EXTENSION) return extensions;
  if (loadOptions != KVN_XML_USUAL_EXTENSION) {
    extensions.AddChild(*reinterpret_cast<IXmlBinding*>(loadOptions), KVN_XML_REQUIRED);
    return extensions;
  }
  vusta.reset(NewVustaLoader(*this, network, nodeHandles));
  if (vusta != nullptr) extensions.AddChild(*vusta->GetRootBinding(), KVN_XML_REQUIRED);
  return extensions;
}
