// A plug-in that loads another (VantelTestPlugin, from the file the build names) from its load entry,
// registering one type before and one after, so that tests can see which plug-in each type is booked to. It
// has no unload entry.
#include <filesystem>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Plugin.h>
#include <Vantel/Objects/TypeLibrary.h>

namespace VantelNestedTestPlugin {

const Vantel::ObjectType* BeforeType() {
    static const Vantel::ObjectType type("NestedTestPlugin.Before", Vantel::Object::Type(), nullptr);
    return &type;
}

const Vantel::ObjectType* AfterType() {
    static const Vantel::ObjectType type("NestedTestPlugin.After", Vantel::Object::Type(), nullptr);
    return &type;
}

}  // namespace VantelNestedTestPlugin

VANTEL_PLUGIN_EXPORT void VantelPluginLoad() {
    Vantel::TypeLibrary* library = Vantel::TypeLibrary::Get();
    library->RegisterType(VantelNestedTestPlugin::BeforeType());
    // With the platform's separators, as the tests expect in the log.
    library->LoadPluginFromFile(std::filesystem::path(VANTEL_TEST_PLUGIN_FILE).make_preferred());
    library->RegisterType(VantelNestedTestPlugin::AfterType());
}
