#pragma once
// A scene of `make screenshots`: one dialog of the library in a representative state. Each
// subsystem's scenes live in their own file and register themselves with MERIDEX_SCENE.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QWidget>

namespace meridex::screenshots {

/// One picture: its file name (without ".png") and what builds the widget to draw, ready to show.
struct Scene {
    std::string name;
    std::function<std::unique_ptr<QWidget>()> make;
};

/// Every registered scene, in registration order.
inline std::vector<Scene>& Scenes() {
    static std::vector<Scene> scenes;
    return scenes;
}

/// Registers a scene when the program starts.
struct SceneRegistration {
    SceneRegistration(std::string name, std::function<std::unique_ptr<QWidget>()> make) {
        Scenes().push_back({std::move(name), std::move(make)});
    }
};

}  // namespace meridex::screenshots

#define MERIDEX_SCENE_CONCAT2(a, b) a##b
#define MERIDEX_SCENE_CONCAT(a, b) MERIDEX_SCENE_CONCAT2(a, b)
/// MERIDEX_SCENE("frmProfiles") { ...; return widget; } registers a scene named frmProfiles.
#define MERIDEX_SCENE(name)                                                                                 \
    static std::unique_ptr<QWidget> MERIDEX_SCENE_CONCAT(MakeScene, __LINE__)();                           \
    static const ::meridex::screenshots::SceneRegistration MERIDEX_SCENE_CONCAT(sceneRegistration, __LINE__)( \
        name, &MERIDEX_SCENE_CONCAT(MakeScene, __LINE__));                                                  \
    static std::unique_ptr<QWidget> MERIDEX_SCENE_CONCAT(MakeScene, __LINE__)()
