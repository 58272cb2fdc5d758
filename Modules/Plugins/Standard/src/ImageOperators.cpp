#include "ImageOperators.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Support/Logging.h>
#include <Vantel/Support/Utf8Paths.h>

#include "ImageFilters.h"

namespace VantelStandard {

using Vantel::Image;
using Vantel::ImageFormat;
using Vantel::LogWarning;
using Vantel::ObjectType;
using Vantel::PathFromUtf8;

namespace {

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// The format that the file's extension (any case) names; none for another extension.
std::optional<ImageFormat> FormatOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static const std::map<std::string, ImageFormat, std::less<>> formats = {{".png", ImageFormat::Png},
                                                                            {".jpg", ImageFormat::Jpg},
                                                                            {".jpeg", ImageFormat::Jpg},
                                                                            {".bmp", ImageFormat::Bmp},
                                                                            {".tga", ImageFormat::Tga}};
    const auto found = formats.find(extension);
    return found == formats.end() ? std::nullopt : std::optional(found->second);
}

// Clears only an output that holds something: clearing an empty one again would count as a new write.
void ClearOutput(ImageOutput& output) {
    if (output.HasData()) {
        output.Clear();
    }
}

}  // namespace

// ---- Load Image ----

LoadImageOperator::LoadImageOperator() {
    file.SetEditorType(Vantel::StringParameter::EditorType::FilePath);
}

VANTEL_DEFINE_OBJECT_TYPE(LoadImageOperator, Operator, "Standard.Image.LoadImage")

void LoadImageOperator::Execute(Vantel::ExecutionContext&) {
    const std::string& path = file.Value();
    if (loaded == path) {
        return;
    }
    loaded = path;
    if (path.empty()) {
        ClearOutput(image);
        return;
    }
    Image decoded;
    std::string problem;
    try {
        decoded = Image::LoadFromFile(path);
        if (!decoded.IsValid()) {
            std::error_code error;
            problem = std::filesystem::exists(PathFromUtf8(path), error)
                          ? "the file is not an image that can be decoded."
                          : "the file does not exist.";
        }
    } catch (const std::filesystem::filesystem_error& error) {
        problem = error.what();
    }
    if (!problem.empty()) {
        LogWarning("Load Image: cannot load " + Quoted(path) + ": " + problem);
        ClearOutput(image);
        return;
    }
    image.Write(std::move(decoded));
}

// ---- Save Image ----

SaveImageOperator::SaveImageOperator() {
    file.SetEditorType(Vantel::StringParameter::EditorType::FilePath);
}

VANTEL_DEFINE_OBJECT_TYPE(SaveImageOperator, Operator, "Standard.Image.SaveImage")

void SaveImageOperator::Execute(Vantel::ExecutionContext&) {
    const Image* input = image.GetImage();
    const std::string& path = file.Value();
    // Runs for a new image or a new path; anything else (the first frame without input) writes nothing.
    if (input == nullptr || path.empty() || !(image.HasDataChanged() || file.HasValueChanged())) {
        return;
    }
    const std::string failed = "Save Image: cannot write " + Quoted(path) + ": ";
    const std::optional<ImageFormat> format = FormatOf(path);
    if (!format) {
        LogWarning(failed + "the file name must end in .png, .jpg, .jpeg, .bmp or .tga.");
        return;
    }
    const std::vector<std::uint8_t> encoded = input->Encode(*format);
    if (encoded.empty()) {
        LogWarning(failed + "the image cannot be encoded in that format.");
        return;
    }
    std::ofstream stream(PathFromUtf8(path), std::ios::binary | std::ios::trunc);
    if (stream) {
        stream.write(reinterpret_cast<const char*>(encoded.data()),
                     static_cast<std::streamsize>(encoded.size()));
        stream.close();
    }
    if (!stream) {
        LogWarning(failed + "the file cannot be opened or written.");
    }
}

// ---- Background work: Blur and Resize ----

void BackgroundImageOperator::Execute(Vantel::ExecutionContext&) {
    const Image* input = image.GetImage();
    if (input == nullptr || !IsProcessable(*input)) {
        if (input != nullptr && image.HasDataChanged()) {
            LogWarning(GetType()->GetDisplayName() +
                       ": only images with 8 bits per channel can be processed.");
        }
        job.Cancel();
        started.reset();
        ClearOutput(result);
        return;
    }
    // A result that came back is written even when a new job starts below: under settings that change in
    // every frame (a radius driven by an oscillator) the output would otherwise never be updated.
    if (std::optional<Image> done = job.Take()) {
        result.Write(std::move(*done));
    }
    auto request = std::make_pair(image.GetDataSerial(), GetSettings());
    if (started == request) {
        return;
    }
    started = std::move(request);
    job.Start(*input, MakeWork());
}

bool BackgroundImageOperator::Outdated() const {
    return job.HasResult() || Operator::Outdated();
}

BlurOperator::BlurOperator() {
    mode.SetPossibleValues({"box", "gaussian"}, {"Box", "Gaussian"});
    mode = "gaussian";
}

VANTEL_DEFINE_OBJECT_TYPE(BlurOperator, Operator, "Standard.Image.Blur")

std::vector<double> BlurOperator::GetSettings() const {
    return {static_cast<double>(mode.GetIndexOr(1)), radius.Value()};
}

BackgroundImageJob::Work BlurOperator::MakeWork() const {
    // An unknown mode (from a project of another version) blurs as the default does.
    const BlurMode blurMode = mode.GetIndexOr(1) == 0 ? BlurMode::Box : BlurMode::Gaussian;
    return [blurMode, radius = radius.Value()](const Image& input) { return Blur(input, blurMode, radius); };
}

VANTEL_DEFINE_OBJECT_TYPE(ResizeOperator, Operator, "Standard.Image.Resize")

std::vector<double> ResizeOperator::GetSettings() const {
    return {static_cast<double>(width.Value()), static_cast<double>(height.Value())};
}

BackgroundImageJob::Work ResizeOperator::MakeWork() const {
    const auto clamp = [](std::int64_t size) {
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(size, 1, kMaxImageSize));
    };
    return [w = clamp(width.Value()), h = clamp(height.Value())](const Image& input) {
        return Resize(input, w, h);
    };
}

// ---- Invert ----

VANTEL_DEFINE_OBJECT_TYPE(InvertOperator, Operator, "Standard.Image.Invert")

void InvertOperator::Execute(Vantel::ExecutionContext&) {
    const Image* input = image.GetImage();
    if (input == nullptr || !IsProcessable(*input)) {
        if (input != nullptr && image.HasDataChanged()) {
            LogWarning("Invert: only images with 8 bits per channel can be processed.");
        }
        ClearOutput(result);
        return;
    }
    result.Write(Invert(*input));
}

}  // namespace VantelStandard
