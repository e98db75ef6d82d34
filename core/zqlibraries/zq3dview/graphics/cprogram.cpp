#include "zq3dview/graphics/cprogram.h"

#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zqbase/zqcolorrgba.h"

#include <epoxy/gl.h>

#include <string>

namespace Graphics
{
namespace
{
// The first line of a compile or link log: drivers put the first error there, and the exception's
// text stays one line.
std::string firstLine(std::string log)
{
    const std::size_t end = log.find('\n');
    if (end != std::string::npos)
        log.resize(end);
    return log.empty() ? "no log" : log;
}

// The first line of the info log of a shader or a program, read with its pair of query functions.
std::string infoLog(GLuint name, PFNGLGETSHADERIVPROC getParameter, PFNGLGETSHADERINFOLOGPROC getLog)
{
    GLint length = 0;
    getParameter(name, GL_INFO_LOG_LENGTH, &length);
    std::string log(std::size_t(length > 0 ? length : 0), '\0');
    if (length > 0)
        getLog(name, length, nullptr, log.data());
    return firstLine(log.c_str());
}

CShaderName compile(const char* label, GLenum stage, const char* source)
{
    CShaderName shader(glCreateShader(stage));
    glShaderSource(shader.GetName(), 1, &source, nullptr);
    glCompileShader(shader.GetName());
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader.GetName(), GL_COMPILE_STATUS, &compiled);
    if (!compiled)
        throw CExceptionGraphics(
            __FILE__, __LINE__, "Graphics::CProgram::Build",
            std::string(label) + (stage == GL_VERTEX_SHADER ? " vertex" : " fragment") +
                " shader: " + infoLog(shader.GetName(), glGetShaderiv, glGetShaderInfoLog));
    return shader;
}
} // namespace

CProgram CProgram::Build(const char* label, const char* vertexSource, const char* fragmentSource)
{
    const CShaderName vertex = compile(label, GL_VERTEX_SHADER, vertexSource);
    const CShaderName fragment = compile(label, GL_FRAGMENT_SHADER, fragmentSource);
    CProgram program(glCreateProgram());
    glAttachShader(program.GetName(), vertex.GetName());
    glAttachShader(program.GetName(), fragment.GetName());
    glLinkProgram(program.GetName());
    GLint linked = GL_FALSE;
    glGetProgramiv(program.GetName(), GL_LINK_STATUS, &linked);
    if (!linked)
        throw CExceptionGraphics(__FILE__, __LINE__, "Graphics::CProgram::Build",
                                 std::string(label) + " program: " +
                                     infoLog(program.GetName(), glGetProgramiv, glGetProgramInfoLog));
    glDetachShader(program.GetName(), vertex.GetName());
    glDetachShader(program.GetName(), fragment.GetName());
    CExceptionGraphics::ThrowOnGLError("Graphics::CProgram::Build");
    return program;
}

int CProgram::GetUniformLocation(const char* name) const
{
    return glGetUniformLocation(GetName(), name);
}

void CProgram::Use() const
{
    glUseProgram(GetName());
}

void CProgram::SetUniform(int location, int value) const
{
    glProgramUniform1i(GetName(), location, value);
}

void CProgram::SetUniform(int location, float value) const
{
    glProgramUniform1f(GetName(), location, value);
}

void CProgram::SetUniformVec3(int location, const float* values, int count) const
{
    glProgramUniform3fv(GetName(), location, count, values);
}

void CProgram::SetUniformVec4(int location, const float* values, int count) const
{
    glProgramUniform4fv(GetName(), location, count, values);
}

void CProgram::SetUniformMat3(int location, const float* values) const
{
    glProgramUniformMatrix3fv(GetName(), location, 1, GL_FALSE, values);
}

void CProgram::SetUniformMat4(int location, const float* values) const
{
    glProgramUniformMatrix4fv(GetName(), location, 1, GL_FALSE, values);
}
void CProgram::SetUniformColor(int location, const ZqColorRGBA& color) const
{
    glProgramUniform4f(GetName(), location, color.r, color.g, color.b, color.a);
}
} // namespace Graphics
