# Writes a source that holds the bytes of a file:
# cmake -DFILE=view.html -DOUTPUT=asset.cpp -P embed.cmake
file(READ ${FILE} bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
                     "${bytes}")
file(WRITE ${OUTPUT}
     "#include \"asset.hpp\"

namespace vorl::view {

namespace {

constexpr unsigned char BYTES[] = {
${bytes}};

}  // namespace

std::string_view asset() { return {reinterpret_cast<const char*>(BYTES), sizeof BYTES}; }

}  // namespace vorl::view
")
