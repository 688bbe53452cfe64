# Writes each block of C++ in a page to FOLDER/program_N.cpp, and the block of text behind it to FOLDER/program_N.txt.
/^```cpp$/ { file = folder "/program_" ++number ".cpp"; printf "" > file; next }
/^```text$/ { file = folder "/program_" number ".txt"; printf "" > file; next }
/^```/ { file = ""; next }
file != "" { print > file }
