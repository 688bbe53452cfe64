# A filter: the headers as doxygen reads them. A comment `// ...` above a group of declarations, up to the next empty
# line, documents each of them that has no comment of its own; and the comment of a function also documents the
# overloads right after it.

function name_of(line) {
    if (!match(line, /[A-Za-z_0-9]+\(/)) return ""
    return substr(line, RSTART, RLENGTH)
}
# Writes a comment on one line: a further line would shift the line numbers of the reference.
function document(comment) {
    gsub(/\n/, " ", comment)
    printf "/** %s */ ", comment
}

/^[ \t]*\/\/ -/ { print; next }
/^[ \t]*\/\/ / {
    if (!in_group) group = ""
    sub(/^[ \t]*\/\/ /, "")
    group = group $0 "\n"
    in_group = 1
    print ""
    next
}
{ in_group = 0 }
/^[ \t]*$/ { group = "" }
/^[ \t]*\/\/\// {
    print
    if (!is_documented) own = ""
    sub(/^[ \t]*\/\/\/ ?/, "")
    own = own $0 "\n"
    is_documented = 1
    next
}
/^[ \t]*(TESSARIN_API|virtual|struct|static|explicit|(unsigned )?[A-Za-z_:0-9]+&? [A-Za-z_=]+( =|\(|;))/ {
    if (is_documented) {
        documented = name_of($0)
    } else if (documented != "" && name_of($0) == documented) {
        document(own)
    } else if (group != "") {
        document(group)
    }
}
{ is_documented = 0; print }
