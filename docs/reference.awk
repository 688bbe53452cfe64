# The headers as the reference reads them. A comment `// ...` above a group of declarations, up to the next empty line,
# is said of each of those that have no comment of their own; and what is said of a function, of its overloads right
# behind it.

function name_of(line) {
    if (!match(line, /[A-Za-z_0-9]+\(/)) return ""
    return substr(line, RSTART, RLENGTH)
}
# Lists are for sources; here a comment is one line, as a line more would put the reference's line numbers off.
function say(comment) {
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
        say(own)
    } else if (group != "") {
        say(group)
    }
}
{ is_documented = 0; print }
