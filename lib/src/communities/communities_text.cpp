#include <vorl/communities_text.hpp>

#include <charconv>

namespace vorl {

namespace {

template <class NumberT>
void append(std::string& text, NumberT number) {
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

std::string clustersText(const Communities& found, const Labels* labels) {
    std::string text = "# Clusters: ";
    append(text, found.count());
    text += ", Nodes: ";
    append(text, found.nodes());
    text += found.shared() ? ", Fuzzy: 1, Numbered: 0\n" : ", Fuzzy: 0, Numbered: 0\n";
    for (Id community = 0; community < found.count(); ++community) {
        for (const auto& [place, share] : found.members(community)) {
            naming::appendQuoted(text, found.ids()[place], labels);
            if (share < 1) {
                text += ':';
                append(text, share);
            }
            text += ' ';
        }
        text.back() = '\n';
    }
    return text;
}

std::string tableText(const Communities& found, char separator, const Labels* labels) {
    std::string text = "node";
    text += separator;
    text += "community";
    text += separator;
    text += "share\n";
    for (Size place = 0; place < found.nodes(); ++place)
        for (const CommunityShare& part : found.of(place)) {
            naming::appendCell(text, found.ids()[place], labels, separator);
            text += separator;
            append(text, part.community);
            text += separator;
            append(text, part.share);
            text += '\n';
        }
    return text;
}

}  // namespace vorl
