// Compiled, never linked, by the ctest TypeDeclarationWrongBase: a type that names a base other than its
// nearest typed base must be refused at compile time, with the message that says which base to name.
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>

class Shape : public Vantel::Object {
public:
    VANTEL_OBJECT_TYPE(Shape, Object, "Test.Shape");
};

class Circle : public Shape {
public:
#ifdef NAME_NEAREST_BASE
    VANTEL_OBJECT_TYPE(Circle, Shape, "Test.Circle");
#else
    VANTEL_OBJECT_TYPE(Circle, Object, "Test.Circle");
#endif
};

const Vantel::ObjectType* circleType = Circle::Type();
