#pragma once

#include <jni.h>

#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// A JVM in a few lines: a JNI function table with the functions that the bridge uses, a receiver
/// with all its callbacks, and a record of what was done. It is stricter than the JVM: a call with
/// an exception pending, a null or dead reference where none may be, or a method id of another
/// class is noted in `violations`. Functions outside the table crash.
class FakeJni {
 public:
  FakeJni();
  FakeJni(const FakeJni&) = delete;
  FakeJni& operator=(const FakeJni&) = delete;
  ~FakeJni();

  JNIEnv* Env();
  jobject Receiver();

  // Objects of the host, to be used as arguments. A null text or reference stays null.
  jstring Text(const char* text);
  jobjectArray Texts(const std::vector<const char*>& texts);
  jobjectArray Objects(const std::vector<jobject>& items);
  jdoubleArray Doubles(const std::vector<double>& items);
  jintArray Ints(const std::vector<int>& items);

  // How the host behaves.
  std::set<std::string> missing;                       // methods it lacks, name and signature
  std::string throwIn;                                 // the callback that throws, "" for none
  std::function<void(const std::string&)> onCallback;  // gets the line that goes to `calls`
  int failAt = -1;  // number, from 0, of the JNI call that fails among those that can

  // What happened.
  std::vector<std::string> calls;    // callbacks with their arguments
  std::vector<std::string> lookups;  // classes and methods looked up, in order
  std::vector<std::string> violations;
  int failable = 0;          // calls so far of functions that can fail
  int nullRegionCopies = 0;  // SetIntArrayRegion with a null array
  int charactersHeld = 0;    // strings whose characters were not released
  int elementsHeld = 0;      // arrays whose elements were not released
  int mostLocals = 0;        // largest number of local references alive at a time

  /// "java/lang/Exception: text" of the exception that is pending, "" for none.
  const std::string& Pending() const { return pending; }
  /// What the JVM does when a native method returns: the local references made since the last time
  /// die and the exception is delivered. Returns how many references were alive.
  int ReturnToHost();

 private:
  struct Object;
  struct Reference;
  struct Method;
  struct FakeEnv;
  struct Table;

  Object* NewObject(const char* className);
  jobject Refer(Object* object, bool local);
  Object* Resolve(const char* function, jobject reference);
  void Enter(const char* function);
  bool Fails(const char* exception);
  void CallBack(const Method& method, va_list arguments);
  static std::string Show(const Object* object);

  std::unique_ptr<FakeEnv> env;
  std::deque<Object> objects;
  std::deque<Reference> references;
  std::deque<Method> methods;
  std::deque<std::string> lentCharacters;
  jobject receiver = nullptr;
  std::string pending;
  int locals = 0;
};
