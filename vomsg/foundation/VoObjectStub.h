// A handle on a shared object: the last handle deletes it. Handles are values and members; ask
// countReference() before you change what others may share. Not for several threads.
#pragma once

#include <memory>

#include "vomsg/foundation/VoObjectRef.h"

template <class T>
class VoObjectStub {
 public:
  VoObjectStub() = default;                                                // empty
  explicit VoObjectStub(T* object) : mpRef(new VoObjectRef<T>(object)) {}  // takes the object over
  VoObjectStub(const VoObjectStub& other) : mpRef(other.mpRef) {
    if (mpRef) ++mpRef->mCount;
  }
  VoObjectStub& operator=(const VoObjectStub& other) {
    VoObjectRef<T>* const ref = other.mpRef;  // free() may take `other` along, were it a member of the object
    if (ref == mpRef) return *this;
    if (ref) ++ref->mCount;
    free();
    mpRef = ref;
    return *this;
  }
  ~VoObjectStub() { free(); }

  // A further handle on the same object, on the heap; the caller deletes it.
  VoObjectStub* copy() const { return new VoObjectStub(*this); }

  // Lets go of the object, which dies with its last handle. The handle is empty afterwards.
  void free() {
    if (mpRef && --mpRef->mCount == 0) delete mpRef;
    mpRef = nullptr;
  }
  T* getObject() const { return mpRef ? mpRef->mpObject : nullptr; }  // borrowed; null when empty
  int countReference() const { return mpRef ? mpRef->mCount : 0; }
  // Lets go of the present object and becomes the first handle of `object`, which it takes over and returns. Without
  // memory for that it throws std::bad_alloc: the handle stays as it was, and `object` dies.
  T* adopt(std::unique_ptr<T> object) {
    setNewObject(object.get());
    return object.release();
  }
  // The same with a plain pointer: without memory, `object` stays the caller's.
  void setNewObject(T* object) {
    VoObjectRef<T>* const ref = new VoObjectRef<T>(object);
    free();
    mpRef = ref;
  }

 private:
  VoObjectRef<T>* mpRef = nullptr;
};
