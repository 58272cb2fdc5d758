#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Execution/Tasks.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/PluginFiles.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Support/FileImportRegistry.h>
#include <Vantel/Support/Image.h>

#include "Support/LogCapture.h"
#include "Support/TestOperators.h"

// The plug-in is loaded by name from this executable's folder, once for all tests; its types are only reached
// through the public interface, the way a host reaches them.
namespace Vantel {
namespace {

namespace fs = std::filesystem;
using Testing::LogCapture;

std::string loadLog;  // what loading the plug-in logged

class PluginEnvironment : public testing::Environment {
public:
    void SetUp() override {
        RegisterCoreTypes();
        LogCapture log;
        ASSERT_TRUE(TypeLibrary::Get()->LoadPlugin("VantelStandard"));
        loadLog = log.Text();
    }
    // No background task may outlive the plug-in's code.
    void TearDown() override {
        Tasks::Shutdown();
        TypeLibrary::Get()->UnloadPlugin("VantelStandard");
    }
};
const auto* const environment = testing::AddGlobalTestEnvironment(new PluginEnvironment);

struct TempFolder {
    fs::path path =
        fs::temp_directory_path() / ("VantelStandardTests-" + std::to_string(std::random_device()()));
    TempFolder() { fs::create_directories(path); }
    ~TempFolder() { fs::remove_all(path); }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
};

// A graph run frame by frame, every frame 0.125 seconds long, the first at time 0.
struct Pipeline {
    Project project;
    Runner runner{std::make_unique<Testing::FixedClock>(0.125)};

    Pipeline() {
        runner.SetGraph(project.GetRootGraph());
        runner.WaitForTick();
    }
    Operator& Add(const std::string& type) {
        auto* op = dynamic_cast<Operator*>(TypeLibrary::Get()->GetType(type)->CreateInstance().release());
        project.GetRootGraph()->AddOperator(std::unique_ptr<Operator>(op));
        return *op;
    }
    void Connect(Operator& from, std::string_view output, Operator& to, std::string_view input) {
        auto* out = dynamic_cast<DataOutput*>(from.FindChild(output));
        auto* in = dynamic_cast<DataInput*>(to.FindChild(input));
        ASSERT_TRUE(project.GetRootGraph()->AddDataConnection({out, in}));
    }
    void Frame() { runner.Execute(); }
    // Lets the background work finish and hands its results back.
    static void Settle() {
        Tasks::WaitForBackgroundTasks();
        Tasks::ProcessMainThreadTasks();
    }
};

template <typename P>
P& Param(Operator& op, std::string_view key) {
    auto* parameter = dynamic_cast<P*>(op.FindChild(key));
    EXPECT_NE(parameter, nullptr) << key;
    return *parameter;
}

double Value(Operator& op) {
    return Param<FloatParameter>(op, "Value").Value();
}

TEST(StandardPlugin, RegistersItsDocumentedTypesAndTheImageImporter) {
    // Every doc passed its checks: loading logs nothing but the loading itself.
    const fs::path plugin = GetPluginFolder() / PluginFileNames("VantelStandard").front();
    EXPECT_EQ(loadLog, "[Info] Loading plugin: " + plugin.string() + "\n");

    TypeLibrary& library = *TypeLibrary::Get();
    for (const std::string type :
         {"Standard.Math.Arithmetic", "Standard.Math.Oscillator", "Standard.Math.Counter",
          "Standard.Image.LoadImage", "Standard.Image.SaveImage", "Standard.Image.Blur",
          "Standard.Image.Resize", "Standard.Image.Invert"}) {
        SCOPED_TRACE(type);
        const OperatorInfo* info = library.FindOperatorInfo(library.GetType(type));
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(type, "Standard." + info->category + "." + type.substr(type.rfind('.') + 1));
        EXPECT_FALSE(info->summary.empty());
        // The doc describes every member the operator has.
        const std::unique_ptr<Object> made = info->type->CreateInstance();
        auto& op = dynamic_cast<Operator&>(*made);
        for (const Parameter* parameter : op.GetAllParameters()) {
            EXPECT_NE(info->FindParameter(parameter->GetKey()), nullptr) << parameter->GetKey();
        }
        for (const DataInput* input : op.GetAllDataInputs()) {
            EXPECT_NE(info->FindInput(input->GetKey()), nullptr) << input->GetKey();
        }
        for (const DataOutput* output : op.GetAllDataOutputs()) {
            EXPECT_NE(info->FindOutput(output->GetKey()), nullptr) << output->GetKey();
        }
    }
    // A data type's input, as a graph's user port makes it, takes that type's outputs only.
    for (const char* name : {"Number", "Image"}) {
        const DataTypeInfo* data = library.FindDataTypeByName(name);
        EXPECT_EQ(data->id, std::string("Standard.") + name);
        const std::unique_ptr<Object> input = data->inputType->CreateInstance();
        EXPECT_EQ(dynamic_cast<DataInput&>(*input).GetAcceptedOutputType(), data->outputType);
    }

    const FileImportRegistry::Importer* importer = FileImportRegistry::Get()->FindImporter("shots/X.PNG");
    ASSERT_NE(importer, nullptr);
    ASSERT_EQ(importer->type, library.GetType("Standard.Image.LoadImage"));
    const std::unique_ptr<Object> made = importer->type->CreateInstance();
    auto& load = dynamic_cast<Operator&>(*made);
    importer->import(load, "shots/X.PNG");
    EXPECT_EQ(Param<StringParameter>(load, "File").Value(), "shots/X.PNG");
    EXPECT_EQ(FileImportRegistry::Get()->FindImporter("clip.gif"), nullptr);
}

TEST(StandardPlugin, ArithmeticCoversEveryOperationAndDefinesTheInvalidOnes) {
    struct Row {
        const char* operation;
        double a, b, expected;
    };
    const std::vector<Row> rows = {
        {"Add", 2, 3, 5},       {"Subtract", 2, 3, -1},  {"Multiply", 2, -3, -6}, {"Divide", 3, 2, 1.5},
        {"Divide", 3, 0, 0},    {"Divide", -3, -0.0, 0}, {"Min", 2, -3, -3},      {"Max", 2, -3, 2},
        {"Power", 2, 10, 1024}, {"Power", 0, -1, 0},     {"Power", -4, 0.5, 0},   {"Power", 10, 400, 0},
    };
    Pipeline pipeline;
    Operator& arithmetic = pipeline.Add("Standard.Math.Arithmetic");
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.operation) + " " + std::to_string(row.a) + " " + std::to_string(row.b));
        Param<EnumParameter>(arithmetic, "Operation") = row.operation;
        Param<FloatParameter>(arithmetic, "Value A") = row.a;
        Param<FloatParameter>(arithmetic, "Value B") = row.b;
        pipeline.Frame();
        EXPECT_EQ(Value(arithmetic), row.expected);
    }
    // The result is the operator's to write: never saved, never connected into. An unchanged result sends no
    // new data downstream.
    const FloatParameter& value = Param<FloatParameter>(arithmetic, "Value");
    EXPECT_TRUE(value.HasParameterFlag(ParameterFlag::Output) &&
                value.HasParameterFlag(ParameterFlag::NotSaved));
    const DataOutput& result = *arithmetic.GetAllDataOutputs().front();
    const std::uint64_t serial = result.GetDataSerial();
    Param<FloatParameter>(arithmetic, "Value B") = 500.0;  // runs again; 10 to the 500th is 0, as before
    pipeline.Frame();
    EXPECT_EQ(result.GetDataSerial(), serial);
    Param<FloatParameter>(arithmetic, "Value A") = 1.0;
    pipeline.Frame();
    EXPECT_NE(result.GetDataSerial(), serial);
    Param<FloatParameter>(arithmetic, "Value B") = 400.0;
    // A connected input takes over from its parameter: the counter's 6 times Value B.
    Operator& counter = pipeline.Add("Standard.Math.Counter");
    Param<FloatParameter>(counter, "Start") = 6.0;
    pipeline.Connect(counter, "Count", arithmetic, "A");
    Param<EnumParameter>(arithmetic, "Operation") = "Multiply";
    Param<FloatParameter>(arithmetic, "Value A") = 100.0;
    pipeline.Frame();
    EXPECT_EQ(Value(arithmetic), 6.0 * 400);
}

TEST(StandardPlugin, OscillatorFollowsTheFrameTimeAndDrivesParameters) {
    const double h = std::sqrt(0.5);
    struct Row {
        const char* waveform;
        std::vector<double> values;  // at 0, 0.125, ... 0.875 seconds
    };
    const std::vector<Row> rows = {
        {"Sine", {0, h, 1, h, 0, -h, -1, -h}},
        {"Triangle", {0, 0.5, 1, 0.5, 0, -0.5, -1, -0.5}},
        {"Saw", {0, 0.25, 0.5, 0.75, -1, -0.75, -0.5, -0.25}},
        {"Square", {1, 1, 1, 1, -1, -1, -1, -1}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.waveform);
        Pipeline pipeline;
        Operator& oscillator = pipeline.Add("Standard.Math.Oscillator");
        Param<EnumParameter>(oscillator, "Waveform") = row.waveform;
        for (double expected : row.values) {
            pipeline.Frame();  // runs every frame without anything changing
            EXPECT_NEAR(Value(oscillator), expected, 1e-12);
        }
    }
    // Frequency, phase, amplitude and offset, with the value driving another operator's parameter.
    Pipeline pipeline;
    Operator& oscillator = pipeline.Add("Standard.Math.Oscillator");
    Param<EnumParameter>(oscillator, "Waveform") = "Triangle";
    Param<FloatParameter>(oscillator, "Frequency") = 2.0;
    Param<FloatParameter>(oscillator, "Phase") = 0.25;
    Param<FloatParameter>(oscillator, "Amplitude") = 3.0;
    Param<FloatParameter>(oscillator, "Offset") = 4.0;
    Operator& arithmetic = pipeline.Add("Standard.Math.Arithmetic");
    Parameter& value = Param<FloatParameter>(oscillator, "Value");
    Parameter& target = Param<FloatParameter>(arithmetic, "Value A");
    ASSERT_TRUE(pipeline.project.GetRootGraph()->AddParameterConnection(
        {&value, &target, WholeValueLinks(value, target)}, false));
    for (double expected : {7.0, 4.0, 1.0, 4.0, 7.0}) {  // positions 0.25, 0.5, 0.75, 1, 1.25 cycles
        pipeline.Frame();
        EXPECT_DOUBLE_EQ(Value(oscillator), expected);
        EXPECT_DOUBLE_EQ(Value(arithmetic), expected);  // driven in the same frame (plus Value B, 0)
    }
}

TEST(StandardPlugin, CounterWrapsAndResets) {
    const auto counts = [](Pipeline& pipeline, Operator& counter, int frames) {
        std::vector<double> seen;
        for (int i = 0; i < frames; ++i) {
            pipeline.Frame();
            seen.push_back(Value(counter));
        }
        return seen;
    };
    {
        Pipeline pipeline;
        Operator& counter = pipeline.Add("Standard.Math.Counter");
        Param<BoolParameter>(counter, "Wrap") = true;
        Param<FloatParameter>(counter, "Limit") = 3.0;
        EXPECT_EQ(counts(pipeline, counter, 5), (std::vector<double>{0, 1, 2, 0, 1}));
        Param<TriggerParameter>(counter, "Reset").Trigger();
        EXPECT_EQ(counts(pipeline, counter, 2), (std::vector<double>{0, 1}));
        // Counting down wraps to just below the limit; a step that overshoots keeps the excess.
        Param<FloatParameter>(counter, "Step") = -1.0;
        EXPECT_EQ(counts(pipeline, counter, 3), (std::vector<double>{0, 2, 1}));
        Param<FloatParameter>(counter, "Step") = 2.5;
        EXPECT_EQ(counts(pipeline, counter, 2), (std::vector<double>{0.5, 0}));
        // Without a range there is nothing to wrap into.
        Param<FloatParameter>(counter, "Limit") = 0.0;
        EXPECT_EQ(counts(pipeline, counter, 2), (std::vector<double>{2.5, 5}));
    }
    {
        Pipeline pipeline;
        Operator& counter = pipeline.Add("Standard.Math.Counter");
        Param<EnumParameter>(counter, "Mode") = "Triggers";
        Param<FloatParameter>(counter, "Start") = 10.0;
        EXPECT_EQ(counts(pipeline, counter, 2), (std::vector<double>{10, 10}));
        Param<TriggerParameter>(counter, "Pulse").Trigger();
        EXPECT_EQ(counts(pipeline, counter, 2), (std::vector<double>{11, 11}));
        Param<TriggerParameter>(counter, "Pulse").Trigger();
        Param<TriggerParameter>(counter, "Reset").Trigger();  // the reset wins
        EXPECT_EQ(counts(pipeline, counter, 1), (std::vector<double>{10}));
    }
}

// Load -> a middle operator -> Save, reading "in.png" (written from the given image) and writing "out.png".
struct ImagePipeline : Pipeline {
    TempFolder folder;
    Operator* load = nullptr;
    Operator* work = nullptr;
    Operator* save = nullptr;

    ImagePipeline(const std::string& type, const Image& input) {
        const std::vector<std::uint8_t> png = input.Encode(ImageFormat::Png);
        EXPECT_FALSE(png.empty());
        std::ofstream(folder / "in.png", std::ios::binary)
            .write(reinterpret_cast<const char*>(png.data()), png.size());
        load = &Add("Standard.Image.LoadImage");
        work = &Add(type);
        save = &Add("Standard.Image.SaveImage");
        Connect(*load, "Image", *work, "Image");
        Connect(*work, "Result", *save, "Image");
        Param<StringParameter>(*load, "File") = folder / "in.png";
        Param<StringParameter>(*save, "File") = folder / "out.png";
    }
    std::vector<std::uint8_t> Saved() { return Image::LoadFromFile(folder / "out.png").GetPixelData(); }
};

TEST(StandardPlugin, LoadInvertSaveRoundTripAndTheirWarnings) {
    ImagePipeline pipeline("Standard.Image.Invert", Image({0, 100, 255, 7, 10, 20, 30, 255}, 2, 1, 4, 8));
    const TempFolder& folder = pipeline.folder;
    Operator& load = *pipeline.load;
    Operator& save = *pipeline.save;
    {
        LogCapture log;
        pipeline.Frame();
        EXPECT_EQ(log.Text(), "");
    }
    const Image inverted = Image::LoadFromFile(folder / "out.png");
    EXPECT_EQ(inverted.GetPixelData(), (std::vector<std::uint8_t>{255, 155, 0, 7, 245, 235, 225, 255}));
    {
        // A new path writes the image again, in the format of the extension, whatever its case.
        Param<StringParameter>(save, "File") = folder / "out.BMP";
        pipeline.Frame();
        const Image bmp = Image::LoadFromFile(folder / "out.BMP");
        EXPECT_EQ(bmp.GetWidth(), 2u);
        EXPECT_EQ(bmp.GetPixelData(), inverted.GetPixelData());
    }
    {
        LogCapture log;
        const std::string missing = folder / "missing.png";
        Param<StringParameter>(load, "File") = missing;
        pipeline.Frame();
        pipeline.Frame();  // reported once per change
        EXPECT_EQ(log.Text(),
                  "[Warning] Load Image: cannot load \"" + missing + "\": the file does not exist.\n");
        log.Clear();
        std::ofstream(folder / "text.png") << "not a picture";
        Param<StringParameter>(load, "File") = folder / "text.png";
        pipeline.Frame();
        EXPECT_EQ(log.Text(), "[Warning] Load Image: cannot load \"" + (folder / "text.png") +
                                  "\": the file is not an image that can be decoded.\n");
    }
    {
        LogCapture log;
        Param<StringParameter>(load, "File") = folder / "in.png";
        Param<StringParameter>(save, "File") = folder / "out.gif";
        pipeline.Frame();
        Param<StringParameter>(save, "File") = folder / "no/such/folder/out.png";
        pipeline.Frame();
        EXPECT_EQ(log.Lines(),
                  (std::vector<std::string>{
                      "[Warning] Save Image: cannot write \"" + (folder / "out.gif") +
                          "\": the file name must end in .png, .jpg, .jpeg, .bmp or .tga.",
                      "[Warning] Save Image: cannot write \"" + (folder / "no/such/folder/out.png") +
                          "\": the file cannot be opened or written."}));
    }
}

TEST(StandardPlugin, BackgroundResultsArriveInALaterFrameAndStaleOnesAreDropped) {
    const Image large(std::vector<std::uint8_t>(256 * 256 * 3, 128), 256, 256, 3, 8);
    // One white pixel in the middle of black, grey only (one channel).
    std::vector<std::uint8_t> dot(9, 0);
    dot[4] = 255;
    const Image input(dot, 3, 3, 1, 8);
    {
        ImagePipeline pipeline("Standard.Image.Blur", input);
        Param<EnumParameter>(*pipeline.work, "Mode") = "Box";
        Param<FloatParameter>(*pipeline.work, "Radius") = 1.0;
        pipeline.Frame();
        Pipeline::Settle();
        EXPECT_FALSE(fs::exists(pipeline.folder / "out.png"));  // the result waits for the next frame
        pipeline.Frame();
        // Edges repeat: the corner's box holds the dot once among nine pixels, and so does every other box.
        EXPECT_EQ(pipeline.Saved(), std::vector<std::uint8_t>(9, 28));
        // A Gaussian spreads the dot alike in every direction.
        Param<EnumParameter>(*pipeline.work, "Mode") = "Gaussian";
        pipeline.Frame();
        Pipeline::Settle();
        pipeline.Frame();
        const std::vector<std::uint8_t> spread = pipeline.Saved();
        ASSERT_EQ(spread.size(), 9u);
        EXPECT_TRUE(spread[0] == spread[8] && spread[1] == spread[7] && spread[3] == spread[5]) << spread[0];
        EXPECT_GT(spread[4], spread[1]);

        // An input that goes away empties the output, and the job still in flight is forgotten.
        fs::remove(pipeline.folder / "out.png");
        Param<FloatParameter>(*pipeline.work, "Radius") = 0.0;  // the image as it is
        pipeline.Frame();
        LogCapture log;
        Param<StringParameter>(*pipeline.load, "File") = "";
        pipeline.Frame();
        Pipeline::Settle();
        pipeline.Frame();
        EXPECT_EQ(log.Text(), "");  // no image is not an image of the wrong kind
        EXPECT_FALSE(pipeline.work->GetAllDataOutputs()[0]->HasData());
        EXPECT_FALSE(fs::exists(pipeline.folder / "out.png"));

        // So is a result that came back but was not taken yet: it never reaches the output later.
        Param<StringParameter>(*pipeline.load, "File") = pipeline.folder / "in.png";
        pipeline.Frame();
        Pipeline::Settle();
        Param<StringParameter>(*pipeline.load, "File") = "";
        pipeline.Frame();
        Param<StringParameter>(*pipeline.load, "File") = pipeline.folder / "in.png";
        pipeline.Frame();
        EXPECT_FALSE(pipeline.work->GetAllDataOutputs()[0]->HasData());
    }
    {
        // An overtaken job never reaches the output, even when it finishes long before the newer one.
        ImagePipeline pipeline("Standard.Image.Blur", large);
        Param<FloatParameter>(*pipeline.work, "Radius") = 0.0;  // done at once
        pipeline.Frame();
        Param<FloatParameter>(*pipeline.work, "Radius") = 20.0;  // takes a while
        pipeline.Frame();
        std::set<std::uint64_t> written;
        const DataOutput& result = *pipeline.work->GetAllDataOutputs()[0];
        for (int frame = 0; frame < 100 && written.empty(); ++frame) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            Tasks::ProcessMainThreadTasks();
            pipeline.Frame();
            if (result.HasData()) {
                written.insert(result.GetDataSerial());
            }
        }
        Pipeline::Settle();
        pipeline.Frame();
        written.insert(result.GetDataSerial());
        EXPECT_EQ(written.size(), 1u);
    }
    {
        ImagePipeline pipeline("Standard.Image.Resize", Image({0, 0, 0, 255, 200, 100, 50, 255}, 2, 1, 4, 8));
        Param<IntParameter>(*pipeline.work, "Width") = 1;
        Param<IntParameter>(*pipeline.work, "Height") = 0;  // taken as 1
        pipeline.Frame();
        Pipeline::Settle();
        pipeline.Frame();
        EXPECT_EQ(pipeline.Saved(), (std::vector<std::uint8_t>{100, 50, 25, 255}));
    }
    {
        // Destroying a blur with a job in flight drops the result quietly.
        auto pipeline = std::make_unique<ImagePipeline>("Standard.Image.Blur", large);
        Param<FloatParameter>(*pipeline->work, "Radius") = 20.0;
        pipeline->Frame();
        pipeline.reset();
        LogCapture log;
        Pipeline::Settle();
        EXPECT_EQ(log.Text(), "");
    }
}

}  // namespace
}  // namespace Vantel
