#include <meridex/platform/StartedProgram.h>

// The parts of a started program that do not depend on the operating system;
// starting, waiting and ending are in each platform's folder.
namespace meridex {

StartedProgram::StartedProgram(StartedProgram&& other) noexcept : id_(other.id_) { other.id_ = 0; }

StartedProgram& StartedProgram::operator=(StartedProgram&& other) noexcept {
    if (this != &other) {
        End();
        id_ = other.id_;
        other.id_ = 0;
    }
    return *this;
}

StartedProgram::~StartedProgram() { End(); }

}  // namespace meridex
