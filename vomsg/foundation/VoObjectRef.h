// The cell that the handles of one shared object point to.
#pragma once

template <class T>
class VoObjectRef {
 public:
  explicit VoObjectRef(T* object) : mpObject(object) {}
  ~VoObjectRef() { delete mpObject; }
  VoObjectRef(const VoObjectRef&) = delete;
  VoObjectRef& operator=(const VoObjectRef&) = delete;

  T* mpObject;
  int mCount = 1;
};
