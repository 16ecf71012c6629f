// Drives SPIRV-Cross's GLSL back end.
#include "OpenGLText.h"

#include "GlslCompilation.h"

#include <spirv_glsl.hpp>

#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

std::string MakeOpenGLText(std::vector<std::uint32_t> spirv, ShaderStage stage) {
    spirv_cross::CompilerGLSL compiler(std::move(spirv));
    spirv_cross::CompilerGLSL::Options options;
    options.version = static_cast<std::uint32_t>(OpenGLVersion(stage));
    options.es = false;
    options.enable_420pack_extension = false;
    options.vertex.support_nonzero_base_instance = false; // bgfx draws from the first instance on
    compiler.set_common_options(options);
    for (auto const variable : compiler.get_active_interface_variables()) {
        if (compiler.get_storage_class(variable) == spv::StorageClassUniformConstant) {
            compiler.unset_decoration(variable, spv::DecorationLocation);
        }
    }
    return compiler.compile();
}

} // namespace zarvex::zx3D::ShaderCompiler
