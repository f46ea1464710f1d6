# Shows doxygen the headers as people read them:
# - a comment is for all declarations that stand together below it, up to a blank line or to the
#   next comment;
# - what is deleted or made by the compiler, and a destructor, needs no words of its own.
# Lines keep their numbers.

function indentOf(line) { match(line, /^ */); return RLENGTH }

function isUnspoken(line) {
    return line ~ /= (delete|default);$/ || line ~ /^ *(virtual )?~[A-Za-z_]+\(\)( override)?;$/
}

function isDestructor(line) { return line ~ /^ *(virtual )?~[A-Za-z_]+\(\)/ }

function beginsDeclaration(line) {
    return indentOf(line) == depth && line !~ /^ *([})#]|(public|private|protected):|friend class )/
}

# Whether a declaration ends with this line: no bracket of it is left open.
function goOn(line) {
    open += gsub(/[({]/, "&", line) - gsub(/[)}]/, "&", line)
    isFinished = open == 0 && line ~ /[;}]$/
}

/^ *\/\/\/($|[^<])/ {
    if (!isComment) { comment = ""; depth = indentOf($0) }
    isComment = 1
    text = $0
    sub(/^ *\/\/\/ ?/, "", text)
    comment = comment " " text
    print
    next
}
/^ *($|\/\/ )/ { comment = ""; isComment = 0 }
{
    code = $0
    sub(/ *\/\/.*/, "", code)
    if (isComment) { open = 0; goOn(code); isComment = 0; print; next }
    if ((comment == "" || isFinished) && isUnspoken(code)) { print ""; next }
    if ((comment == "" || isFinished) && isDestructor(code)) { print "/** Ends it. */" $0; next }
    begins = comment != "" && isFinished && beginsDeclaration(code) && $0 !~ /\/\/\/</
    if (begins) open = 0
    if (comment != "") goOn(code)
    print (begins ? "/**" comment " */" : "") $0
}
