// ImageOperators.h: the image operators: Load Image, Save Image, Blur, Resize and Invert.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/StringParameter.h>

#include "BackgroundImageJob.h"
#include "ImageData.h"

namespace VantelStandard {

// Decodes the file its File parameter names whenever the path changes.
class LoadImageOperator : public Vantel::Operator {
public:
    LoadImageOperator();

    VANTEL_DECLARE_OBJECT_TYPE(LoadImageOperator);

    void Execute(Vantel::ExecutionContext& context) override;
    // What the file importer sets.
    void SetFile(const std::string& path) { file = path; }

private:
    Vantel::StringParameter file{Vantel::ParameterScope(this), "File", ""};
    ImageOutput image{this, "Image"};
    // The path last decoded (or tried), so that a failing file is reported once per change.
    std::optional<std::string> loaded;
};

// Encodes its input to the file its File parameter names, in the format the extension picks.
class SaveImageOperator : public Vantel::Operator {
public:
    SaveImageOperator();

    VANTEL_DECLARE_OBJECT_TYPE(SaveImageOperator);

    void Execute(Vantel::ExecutionContext& context) override;

private:
    ImageInput image{this, "Image"};
    Vantel::StringParameter file{Vantel::ParameterScope(this), "File", ""};
};

// The shared part of the operators whose work runs in the background: one image in, one out. A job starts
// when the input or a setting changed; its result is written in the frame after it came back, and until
// then the output keeps the previous result.
class BackgroundImageOperator : public Vantel::Operator {
public:
    void Execute(Vantel::ExecutionContext& context) final;
    // Also true while a result waits to be written.
    bool Outdated() const override;

protected:
    // The settings the work depends on, compared to decide whether a new job is needed.
    virtual std::vector<double> GetSettings() const = 0;
    // The work for the current settings; it runs on a background thread and must not touch the operator.
    virtual BackgroundImageJob::Work MakeWork() const = 0;

    ImageInput image{this, "Image"};
    ImageOutput result{this, "Result"};

private:
    BackgroundImageJob job;
    // The input serial and settings of the job started last.
    std::optional<std::pair<std::uint64_t, std::vector<double>>> started;
};

class BlurOperator : public BackgroundImageOperator {
public:
    BlurOperator();

    VANTEL_DECLARE_OBJECT_TYPE(BlurOperator);

protected:
    std::vector<double> GetSettings() const override;
    BackgroundImageJob::Work MakeWork() const override;

private:
    Vantel::EnumParameter mode{Vantel::ParameterScope(this), "Mode"};
    Vantel::FloatParameter radius{Vantel::ParameterScope(this), "Radius", 2.0};
};

class ResizeOperator : public BackgroundImageOperator {
public:
    VANTEL_DECLARE_OBJECT_TYPE(ResizeOperator);

protected:
    std::vector<double> GetSettings() const override;
    BackgroundImageJob::Work MakeWork() const override;

private:
    Vantel::IntParameter width{Vantel::ParameterScope(this), "Width", 256};
    Vantel::IntParameter height{Vantel::ParameterScope(this), "Height", 256};
};

// Inverts the colours of its input at once, in the frame the input arrives.
class InvertOperator : public Vantel::Operator {
public:
    VANTEL_DECLARE_OBJECT_TYPE(InvertOperator);

    void Execute(Vantel::ExecutionContext& context) override;

private:
    ImageInput image{this, "Image"};
    ImageOutput result{this, "Result"};
};

}  // namespace VantelStandard
