#include <gtest/gtest.h>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Support/FileImportRegistry.h>

#include "Support/LogCapture.h"
#include "Support/TestPlugins.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

TEST(FileImportRegistry, FindsImportersByExtensionWithoutRegardToCase) {
    LogCapture log;
    FileImportRegistry& registry = *FileImportRegistry::Get();
    static const ObjectType first("FIR.First", Operator::Type(), nullptr);
    static const ObjectType second("FIR.Second", Operator::Type(), nullptr);
    registry.RegisterImporter({".PNG", ".fir1"}, &first, nullptr);
    EXPECT_EQ(registry.FindImporter("photo.png")->type, &first);
    EXPECT_EQ(registry.FindImporter("dir.x/photo.Png")->type, &first);
    EXPECT_EQ(registry.FindImporter("photo.png")->extensions, (std::vector<std::string>{".png", ".fir1"}));
    EXPECT_EQ(registry.FindImporter("noextension"), nullptr);
    EXPECT_EQ(log.Text(), "");

    registry.RegisterImporter({".png"}, &second, nullptr);
    EXPECT_EQ(registry.FindImporter("photo.png")->type, &second);
    EXPECT_EQ(registry.FindImporter("a.fir1")->type, &first);  // the earlier one keeps its other extensions
    registry.RegisterImporter({}, &second, nullptr);
    registry.RegisterImporter({".x"}, nullptr, nullptr);
    EXPECT_EQ(log.Text(),
              "[Warning] File importer for extension \".png\" is being overwritten by a later registration.\n"
              "[Warning] Failed to register file importer: no operator type or no extensions given.\n"
              "[Warning] Failed to register file importer: no operator type or no extensions given.\n");

    registry.RegisterImporter({""}, &second, nullptr);
    EXPECT_EQ(registry.FindImporter("noextension")->type, &second);
}

TEST(FileImportRegistry, ForgetsImportersOfUnloadedPlugins) {
    LogCapture log;
    TypeLibrary& library = *TypeLibrary::Get();
    ASSERT_TRUE(library.LoadPluginFromFile(Testing::TestPluginFile("VantelTestPlugin")));
    const ObjectType* scale = library.GetType("TestPlugin.Math.Scale");
    ASSERT_NE(scale, nullptr);
    int imported = 0;
    FileImportRegistry::Get()->RegisterImporter({".keep"}, Operator::Type(), [](Operator&, const auto&) {});
    FileImportRegistry::Get()->RegisterImporter({".scale"}, scale,
                                                [&](Operator&, const std::filesystem::path&) { ++imported; });
    const FileImportRegistry::Importer* importer = FileImportRegistry::Get()->FindImporter("a.scale");
    ASSERT_NE(importer, nullptr);
    {
        const std::unique_ptr<Object> made = importer->type->CreateInstance();  // gone before its code is
        importer->import(static_cast<Operator&>(*made), "a.scale");
    }
    EXPECT_EQ(imported, 1);
    library.UnloadPlugin("VantelTestPlugin");
    EXPECT_EQ(FileImportRegistry::Get()->FindImporter("a.scale"), nullptr);
    EXPECT_NE(FileImportRegistry::Get()->FindImporter("a.keep"), nullptr);  // another type's importer stays
}

}  // namespace
}  // namespace Vantel
