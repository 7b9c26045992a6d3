#include "tests/support/fakeJni.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

struct FakeJni::Object {
  std::string className;  // of a class object: of the class it stands for
  std::string text;
  std::vector<jint> ints;
  std::vector<jdouble> doubles;
  std::vector<Object*> items;
};

struct FakeJni::Reference {
  Object* object;
  bool local;
  bool alive;
};

struct FakeJni::Method {
  std::string name;
  std::string signature;
};

struct FakeJni::FakeEnv : JNIEnv_ {
  JNINativeInterface_ table{};
  FakeJni* fake = nullptr;
};

/// The functions of the table.
struct FakeJni::Table {
  static FakeJni& Of(JNIEnv* env) { return *static_cast<FakeEnv*>(env)->fake; }

  static FakeJni& Entered(JNIEnv* env, const char* function) {
    Of(env).Enter(function);
    return Of(env);
  }

  template <typename T>
  static T Local(FakeJni& fake, Object* object) {
    return static_cast<T>(fake.Refer(object, /*local=*/true));
  }

  static jint JNICALL GetVersion(JNIEnv*) { return JNI_VERSION_1_8; }

  static jclass JNICALL FindClass(JNIEnv* env, const char* name) {
    FakeJni& fake = Entered(env, "FindClass");
    fake.lookups.emplace_back(name);
    if (fake.Fails("java/lang/NoClassDefFoundError")) return nullptr;
    return Local<jclass>(fake, fake.NewObject(name));
  }

  static jclass JNICALL GetObjectClass(JNIEnv* env, jobject object) {
    FakeJni& fake = Entered(env, "GetObjectClass");
    fake.lookups.emplace_back("class of receiver");
    const Object* of = fake.Resolve("GetObjectClass", object);
    if (of == nullptr || fake.Fails("")) return nullptr;  // this one never throws
    return Local<jclass>(fake, fake.NewObject(of->className.c_str()));
  }

  static jmethodID JNICALL GetMethodID(JNIEnv* env, jclass of, const char* name,
                                       const char* signature) {
    FakeJni& fake = Entered(env, "GetMethodID");
    fake.Resolve("GetMethodID", of);
    const std::string full = std::string(name) + signature;
    fake.lookups.push_back(full);
    if (fake.missing.count(full) != 0) fake.pending = "java/lang/NoSuchMethodError: " + full;
    if (!fake.pending.empty() || fake.Fails("java/lang/NoSuchMethodError")) return nullptr;
    fake.methods.push_back({name, signature});
    return reinterpret_cast<jmethodID>(&fake.methods.back());
  }

  static jstring JNICALL NewStringUTF(JNIEnv* env, const char* text) {
    FakeJni& fake = Entered(env, "NewStringUTF");
    if (fake.Fails("java/lang/OutOfMemoryError")) return nullptr;
    Object* made = fake.NewObject("java/lang/String");
    made->text = text;
    return Local<jstring>(fake, made);
  }

  static const char* JNICALL GetStringUTFChars(JNIEnv* env, jstring text, jboolean*) {
    FakeJni& fake = Entered(env, "GetStringUTFChars");
    const Object* object = fake.Resolve("GetStringUTFChars", text);
    if (object == nullptr || fake.Fails("java/lang/OutOfMemoryError")) return nullptr;
    fake.charactersHeld++;
    fake.lentCharacters.push_back(object->text);
    return fake.lentCharacters.back().c_str();
  }

  static void JNICALL ReleaseStringUTFChars(JNIEnv* env, jstring text, const char*) {
    Of(env).Resolve("ReleaseStringUTFChars", text);
    Of(env).charactersHeld--;
  }

  static jsize JNICALL GetArrayLength(JNIEnv* env, jarray array) {
    FakeJni& fake = Entered(env, "GetArrayLength");
    const Object* object = fake.Resolve("GetArrayLength", array);
    if (object == nullptr) return 0;
    return static_cast<jsize>(object->ints.size() + object->doubles.size() + object->items.size());
  }

  static jobject JNICALL GetObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index) {
    FakeJni& fake = Entered(env, "GetObjectArrayElement");
    const Object* object = fake.Resolve("GetObjectArrayElement", array);
    if (object == nullptr) return nullptr;
    if (index < 0 || index >= static_cast<jsize>(object->items.size())) {
      fake.violations.emplace_back("GetObjectArrayElement: index outside");
      return nullptr;
    }
    Object* item = object->items[index];
    return item != nullptr ? fake.Refer(item, /*local=*/true) : nullptr;
  }

  static jobjectArray JNICALL NewObjectArray(JNIEnv* env, jsize length, jclass of, jobject fill) {
    FakeJni& fake = Entered(env, "NewObjectArray");
    const Object* element = fake.Resolve("NewObjectArray", of);
    Object* first = fake.Resolve("NewObjectArray", fill);
    if (fake.Fails("java/lang/OutOfMemoryError")) return nullptr;
    Object* made = fake.NewObject(("[L" + element->className + ";").c_str());
    made->items.assign(length, first);
    return Local<jobjectArray>(fake, made);
  }

  static void JNICALL SetObjectArrayElement(JNIEnv* env, jobjectArray array, jsize index,
                                            jobject item) {
    FakeJni& fake = Entered(env, "SetObjectArrayElement");
    Object* object = fake.Resolve("SetObjectArrayElement", array);
    Object* value = item != nullptr ? fake.Resolve("SetObjectArrayElement", item) : nullptr;
    if (object == nullptr || fake.Fails("java/lang/ArrayStoreException")) return;
    object->items.at(index) = value;
  }

  template <typename Array, typename Item>
  static Array NewNumbers(JNIEnv* env, const char* function, std::vector<Item> Object::*field,
                          jsize length) {
    FakeJni& fake = Entered(env, function);
    if (fake.Fails("java/lang/OutOfMemoryError")) return nullptr;
    Object* made = fake.NewObject(function);
    (made->*field).assign(length, 0);
    return Local<Array>(fake, made);
  }
  static jintArray JNICALL NewIntArray(JNIEnv* env, jsize length) {
    return NewNumbers<jintArray>(env, "NewIntArray", &Object::ints, length);
  }
  static jdoubleArray JNICALL NewDoubleArray(JNIEnv* env, jsize length) {
    return NewNumbers<jdoubleArray>(env, "NewDoubleArray", &Object::doubles, length);
  }

  template <typename Item>
  static void SetRegion(JNIEnv* env, const char* function, std::vector<Item> Object::*field,
                        jobject array, jsize start, jsize length, const Item* from) {
    FakeJni& fake = Entered(env, function);
    Object* object = fake.Resolve(function, array);
    if (object == nullptr || fake.Fails("java/lang/ArrayIndexOutOfBoundsException")) return;
    for (jsize i = 0; i < length; i++) (object->*field).at(start + i) = from[i];
  }
  static void JNICALL SetIntArrayRegion(JNIEnv* env, jintArray array, jsize start, jsize length,
                                        const jint* from) {
    if (array == nullptr) {
      Of(env).nullRegionCopies++;
      return;
    }
    SetRegion(env, "SetIntArrayRegion", &Object::ints, array, start, length, from);
  }
  static void JNICALL SetDoubleArrayRegion(JNIEnv* env, jdoubleArray array, jsize start,
                                           jsize length, const jdouble* from) {
    SetRegion(env, "SetDoubleArrayRegion", &Object::doubles, array, start, length, from);
  }

  template <typename Item>
  static Item* Elements(JNIEnv* env, const char* function, std::vector<Item> Object::*field,
                        jobject array) {
    FakeJni& fake = Entered(env, function);
    Object* object = fake.Resolve(function, array);
    if (object == nullptr || fake.Fails("java/lang/OutOfMemoryError")) return nullptr;
    fake.elementsHeld++;
    return (object->*field).data();
  }
  static jint* JNICALL GetIntArrayElements(JNIEnv* env, jintArray array, jboolean*) {
    return Elements(env, "GetIntArrayElements", &Object::ints, array);
  }
  static jdouble* JNICALL GetDoubleArrayElements(JNIEnv* env, jdoubleArray array, jboolean*) {
    return Elements(env, "GetDoubleArrayElements", &Object::doubles, array);
  }

  static void Release(JNIEnv* env, jobject array, jint mode) {
    FakeJni& fake = Of(env);
    fake.Resolve("Release", array);
    if (mode != JNI_ABORT) fake.violations.emplace_back("elements written back");
    fake.elementsHeld--;
  }
  static void JNICALL ReleaseIntArrayElements(JNIEnv* env, jintArray array, jint*, jint mode) {
    Release(env, array, mode);
  }
  static void JNICALL ReleaseDoubleArrayElements(JNIEnv* env, jdoubleArray array, jdouble*,
                                                 jint mode) {
    Release(env, array, mode);
  }

  static void JNICALL DeleteLocalRef(JNIEnv* env, jobject reference) {
    FakeJni& fake = Of(env);
    if (fake.Resolve("DeleteLocalRef", reference) == nullptr) return;
    Reference& dead = *reinterpret_cast<Reference*>(reference);
    if (!dead.local) fake.violations.emplace_back("DeleteLocalRef: reference of the host");
    dead.alive = false;
    fake.locals--;
  }

  static jboolean JNICALL ExceptionCheck(JNIEnv* env) {
    return Of(env).pending.empty() ? JNI_FALSE : JNI_TRUE;
  }
  static void JNICALL ExceptionClear(JNIEnv* env) { Of(env).pending.clear(); }
  static jint JNICALL ThrowNew(JNIEnv* env, jclass of, const char* text) {
    FakeJni& fake = Entered(env, "ThrowNew");
    const Object* thrown = fake.Resolve("ThrowNew", of);
    if (thrown == nullptr) return JNI_ERR;
    fake.pending = thrown->className + ": " + text;
    return JNI_OK;
  }

  static void JNICALL CallVoidMethodV(JNIEnv* env, jobject object, jmethodID id,
                                      va_list arguments) {
    FakeJni& fake = Entered(env, "CallVoidMethodV");
    fake.Resolve("CallVoidMethodV", object);
    for (const Method& method : fake.methods) {
      if (reinterpret_cast<jmethodID>(const_cast<Method*>(&method)) == id) {
        fake.CallBack(method, arguments);
        return;
      }
    }
    fake.violations.emplace_back("CallVoidMethodV: no such method id");
  }

  static void Fill(JNINativeInterface_& table) {
    table.GetVersion = GetVersion;
    table.FindClass = FindClass;
    table.GetObjectClass = GetObjectClass;
    table.GetMethodID = GetMethodID;
    table.NewStringUTF = NewStringUTF;
    table.GetStringUTFChars = GetStringUTFChars;
    table.ReleaseStringUTFChars = ReleaseStringUTFChars;
    table.GetArrayLength = GetArrayLength;
    table.GetObjectArrayElement = GetObjectArrayElement;
    table.NewObjectArray = NewObjectArray;
    table.SetObjectArrayElement = SetObjectArrayElement;
    table.NewIntArray = NewIntArray;
    table.NewDoubleArray = NewDoubleArray;
    table.SetIntArrayRegion = SetIntArrayRegion;
    table.SetDoubleArrayRegion = SetDoubleArrayRegion;
    table.GetIntArrayElements = GetIntArrayElements;
    table.GetDoubleArrayElements = GetDoubleArrayElements;
    table.ReleaseIntArrayElements = ReleaseIntArrayElements;
    table.ReleaseDoubleArrayElements = ReleaseDoubleArrayElements;
    table.DeleteLocalRef = DeleteLocalRef;
    table.ExceptionCheck = ExceptionCheck;
    table.ExceptionClear = ExceptionClear;
    table.ThrowNew = ThrowNew;
    table.CallVoidMethodV = CallVoidMethodV;
  }
};

FakeJni::FakeJni() : env(new FakeEnv) {
  Table::Fill(env->table);
  env->functions = &env->table;
  env->fake = this;
  receiver = Refer(NewObject("org/qorl/belief/io/kvn/ORMELReader"), /*local=*/false);
}

FakeJni::~FakeJni() = default;

JNIEnv* FakeJni::Env() { return env.get(); }

jobject FakeJni::Receiver() { return receiver; }

FakeJni::Object* FakeJni::NewObject(const char* className) {
  objects.push_back({className, "", {}, {}, {}});
  return &objects.back();
}

jobject FakeJni::Refer(Object* object, bool local) {
  references.push_back({object, local, true});
  if (local && ++locals > mostLocals) mostLocals = locals;
  return reinterpret_cast<jobject>(&references.back());
}

FakeJni::Object* FakeJni::Resolve(const char* function, jobject reference) {
  const Reference* found = reinterpret_cast<const Reference*>(reference);
  if (found == nullptr || !found->alive) {
    violations.push_back(std::string(function) +
                         (found == nullptr ? ": null" : ": dead reference"));
    return nullptr;
  }
  return found->object;
}

void FakeJni::Enter(const char* function) {
  if (!pending.empty()) violations.push_back(std::string(function) + " while pending: " + pending);
}

bool FakeJni::Fails(const char* exception) {
  if (failable++ != failAt) return false;
  pending = exception;
  return true;
}

jstring FakeJni::Text(const char* text) {
  if (text == nullptr) return nullptr;
  Object* made = NewObject("java/lang/String");
  made->text = text;
  return static_cast<jstring>(Refer(made, /*local=*/false));
}

jobjectArray FakeJni::Texts(const std::vector<const char*>& texts) {
  std::vector<jobject> items;
  for (const char* text : texts) items.push_back(Text(text));
  return Objects(items);
}

jobjectArray FakeJni::Objects(const std::vector<jobject>& items) {
  Object* made = NewObject("[Ljava/lang/Object;");
  for (jobject item : items) {
    made->items.push_back(item != nullptr ? Resolve("Objects", item) : nullptr);
  }
  return static_cast<jobjectArray>(Refer(made, /*local=*/false));
}

jdoubleArray FakeJni::Doubles(const std::vector<double>& items) {
  Object* made = NewObject("[D");
  made->doubles = items;
  return static_cast<jdoubleArray>(Refer(made, /*local=*/false));
}

jintArray FakeJni::Ints(const std::vector<int>& items) {
  Object* made = NewObject("[I");
  made->ints.assign(items.begin(), items.end());
  return static_cast<jintArray>(Refer(made, /*local=*/false));
}

int FakeJni::ReturnToHost() {
  const int alive = locals;
  for (Reference& reference : references) {
    if (reference.local) reference.alive = false;
  }
  locals = 0;
  pending.clear();
  return alive;
}

std::string FakeJni::Show(const Object* object) {
  if (object == nullptr) return "null";
  if (object->className == "java/lang/String") return "'" + object->text + "'";
  std::string text;
  const auto append = [&text](const std::string& item) {
    text += (text.empty() ? "" : " ") + item;
  };
  for (jint item : object->ints) append(std::to_string(item));
  for (jdouble item : object->doubles) {
    char number[32];
    std::snprintf(number, sizeof number, "%.6g", item);
    append(number);
  }
  for (const Object* item : object->items) append(Show(item));
  return "[" + text + "]";
}

void FakeJni::CallBack(const Method& method, va_list arguments) {
  std::string line = method.name;
  for (const char* at = method.signature.c_str() + 1; *at != ')'; at++) {
    line += ' ';
    if (*at == 'I') {
      line += std::to_string(va_arg(arguments, jint));
      continue;
    }
    const jobject argument = va_arg(arguments, jobject);
    line += Show(argument != nullptr ? Resolve("CallVoidMethodV", argument) : nullptr);
    if (*at == '[') at++;
    if (*at == 'L') at = std::strchr(at, ';');
  }
  calls.push_back(line);
  if (onCallback) onCallback(line);
  if (Fails("java/lang/StackOverflowError")) return;
  if (method.name == throwIn) pending = "java/lang/RuntimeException: thrown by " + method.name;
}
