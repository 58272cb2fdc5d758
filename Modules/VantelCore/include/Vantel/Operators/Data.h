// Data.h: the base of every value that flows between operators through data ports.
//
//   class ImageData : public Data { public: Image image; };
//   output.Activate(std::make_shared<ImageData>(...));   // a new value, a new serial
//   if (const Image* picture = data->GetPreviewImage()) { ... }   // what an editor shows of it
#pragma once

#include <cstdint>

#include <Vantel/Export.h>
#include <Vantel/Objects/Object.h>

namespace Vantel {

class Image;

// Data
//
// A value shared by pointer between the output that wrote it and every input that received it; nothing is
// copied. Its serial, unique in the process and rising on each thread, tells ports whether a value is new:
// contents are never compared. The first Data ever made has serial 1; 0 means "no data". Construction is
// thread-safe (values are often built by background tasks); everything else belongs to the model's thread.
class VANTEL_API Data : public Object {
public:
    Data();
    ~Data() override;

    VANTEL_DECLARE_OBJECT_TYPE(Data);

    std::uint64_t GetSerial() const { return serial; }

    // A picture of the value for an editor's preview, or null (the default) for values that have none.
    // An image type returns itself; a type may also draw one. Called on the model's thread.
    virtual const Image* GetPreviewImage() const;

private:
    // Fixed at construction, so it stands inline rather than behind a private block.
    const std::uint64_t serial;
};

}  // namespace Vantel
