# Makes a source file of the page's style and script:
#     cmake -D OUT=parts.cpp -D STYLE=... -D "SCRIPTS=a.js|b.js" -P embed.cmake
# The parts of the script become one text. Lines that are comments and what lines begin with are for
# who reads the sources and not in every page. What is hashed is what the page will hold.
string(REPLACE "|" ";" SCRIPTS "${SCRIPTS}")
set(script_text ${OUT}.js)
file(WRITE ${script_text} "")
foreach(script IN LISTS SCRIPTS)
    file(READ ${script} text)
    string(REGEX REPLACE "\n *//[^\n]*" "" text "\n${text}")
    string(REGEX REPLACE "\n[\n ]+" "\n" text "${text}")
    file(APPEND ${script_text} "${text}")
endforeach()
file(READ ${STYLE} text)
string(REGEX REPLACE "\n[\n ]+" "\n" text "${text}")
set(style_text ${OUT}.css)
file(WRITE ${style_text} "${text}")

function(add_part name file)
    file(READ ${file} bytes HEX)
    file(SHA256 ${file} hash)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND source
        "static const char ${name}Bytes[] = {${bytes}};\n"
        "const Part page${name}{{${name}Bytes, sizeof ${name}Bytes}, \"${hash}\"};\n")
    set(source "${source}" PARENT_SCOPE)
endfunction()

set(source "#include \"tools/vek/report/parts.h\"\n\nnamespace vek::page {\n\n")
add_part(Style ${style_text})
add_part(Script ${script_text})
string(APPEND source "\n}  // namespace vek::page\n")
file(WRITE ${OUT} "${source}")
