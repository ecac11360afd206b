#include "Scene.h"

namespace meridex::screenshots {

std::vector<Scene>& Scenes() {
    static std::vector<Scene> scenes;
    return scenes;
}

}  // namespace meridex::screenshots
