# Writes each C++ block of a page to FOLDER/program_N.cpp, and the text block after it to FOLDER/program_N.txt.
/^```cpp$/ { file = folder "/program_" ++number ".cpp"; printf "" > file; next }
/^```text$/ { file = folder "/program_" number ".txt"; printf "" > file; next }
/^```/ { file = ""; next }
file != "" { print > file }
