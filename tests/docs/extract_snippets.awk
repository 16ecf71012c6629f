# Writes the C++ snippets and the shaders of Markdown pages into source files, below the folder given with -v
# folder=...: all of drawing.md into drawing.cpp, a snippet that has a main() into a file of its own, and a shader into
# the file that its first line names in a comment.
#
# A snippet that defines a class stands in a namespace, any other in a function; Prelude.h has the objects that
# they use. Includes come first. Errors are reported at the place on the page.

FNR == 1 { count = 0 }
/^```glsl$/ { isShader = 1; shader = ""; next }
isShader && shader == "" { shader = folder "/" $2; next }
/^```/ { isShader = 0 }
isShader { print > shader }
/^```cpp$/ { isSnippet = 1; firstLine = FNR + 1; includes = code = ""; next }
/^```/ && isSnippet { isSnippet = 0; write(); next }
isSnippet && /^#include/ { includes = includes $0 "\n"; code = code "\n"; next }
isSnippet { code = code $0 "\n" }

function pageName(name) {
    name = FILENAME
    sub(/.*\//, "", name)
    sub(/\.md$/, "", name)
    return name
}

function write(    located) {
    ++count
    located = "#line " firstLine " \"" FILENAME "\"\n" code
    if (("\n" code) ~ /\nint main\(/) {
        print includes located > (folder "/" pageName() "_program" count ".cpp")
        return
    }
    print "#include \"Prelude.h\"\n" includes "namespace snippet" count " {" > (folder "/" pageName() ".cpp")
    if (("\n" code) ~ /\n(class|struct) /)
        print located "}" > (folder "/" pageName() ".cpp")
    else
        print "void Run() {\n" located "}\n}" > (folder "/" pageName() ".cpp")
}
