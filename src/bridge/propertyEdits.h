#pragma once

#include <jni.h>

class KVN_userProperties;

/// Edits of property lists that an update brings.

/// Drops what the host has listed: the property "user_properties" holds the keys to delete,
/// separated by commas (empty ones don't count, blanks belong to the key, at most 99 are looked
/// at). That property goes too. Nothing happens without it.
void RemoveListedProperties(KVN_userProperties& properties);

/// Adds the pairs in order. With `replace` an existing key is deleted first; without, AddProperty
/// moves it to the end with the new value (intended), so the order shows what the host has sent
/// either way. Nothing happens when an array is null, when there are no keys, or when the lengths
/// differ. A null key is skipped; a null value is stored as such; a key that is no identifier is
/// refused by the list, silently. False when the JVM has no memory, its error pending.
bool MergeProperties(JNIEnv* env, KVN_userProperties& properties, jobjectArray keys,
                     jobjectArray values, bool replace);
