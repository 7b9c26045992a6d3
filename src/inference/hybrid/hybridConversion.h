#pragma once

class KVN_network;

/// Equations with evidence below them can't be met by solving forward; they are to be converted
/// node for node into a hybrid network, sampled there and copied back.
///
/// No class of hybrid definition stands yet, so no node can be converted: KVN_REFUSED, with the
/// first node in parents-first order in the message, and no value is valid but for evidence.
int ConvertToHybrid(KVN_network& network);
