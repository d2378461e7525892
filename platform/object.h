// The root of every class that has handlers, properties or a counted life.
#pragma once

namespace System {

struct TClassInfo;

/// Root class. Receivers of bound methods descend plainly (not virtually) from it.
class TObject {
 public:
  TObject() = default;
  virtual ~TObject() = default;

  /// The class table of the object's own class; the root's table has no properties.
  static const TClassInfo& ClassInfo();
  virtual const TClassInfo& GetClassInfo() const { return ClassInfo(); }

 protected:
  TObject(const TObject&) = default;
  TObject& operator=(const TObject&) = default;
};

/// Declares the class table of a class (defined in its .cpp) and the virtual way to it.
#define FENCING_CLASS_INFO()                                  \
  static const ::System::TClassInfo& ClassInfo();             \
  const ::System::TClassInfo& GetClassInfo() const override { \
    return ClassInfo();                                       \
  }

}  // namespace System
