// The formats that this library reads and writes, by code. A code without a row is an unknown
// format to CreateSpeaker.

#include <new>

#include "formats/text/ergoSpeaker.h"
#include "formats/text/huginSpeaker.h"
#include "formats/text/kvnSpeaker.h"
#include "formats/text/microsoftSpeaker.h"
#include "formats/text/neticaSpeaker.h"
#include "formats/text/xmlSpeaker.h"
#include "formats/xml/xkvnSpeaker.h"
#include "network/fileSpeaker.h"

namespace {

template <typename Speaker>
KVN_fileSpeaker* Make(KVN_network& network) {
  return new (std::nothrow) Speaker(network);
}

}  // namespace

const KVN_formatRow theFileFormats[] = {
    {KVN_FORMAT_ERGO, Make<KVN_ergoSpeaker>},
    {KVN_FORMAT_NETICA, Make<KVN_neticaSpeaker>},
    {KVN_FORMAT_MICROSOFT, Make<KVN_microsoftSpeaker>},
    {KVN_FORMAT_KVN, Make<KVN_kvnSpeaker>},
    {KVN_FORMAT_HUGIN, Make<KVN_huginSpeaker>},
    {KVN_FORMAT_XMLBIF, Make<KVN_xmlSpeaker>},
    {KVN_FORMAT_XKVN, Make<KVN_xkvnSpeaker>},
    {-1, nullptr},
};
