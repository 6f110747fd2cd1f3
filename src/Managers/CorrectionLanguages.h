#pragma once

#include <array>
#include <span>
#include <string_view>

namespace Velloro {

/// What text correction knows of one language.
struct CorrectionLanguage
{
    /// The recogniser's code of the language.
    std::u16string_view code;
    /// Whether a text begins with a capital letter.
    bool capitalizes;
    /// Filler expressions in lower case, in the order in which they are removed.
    std::span<const std::u16string_view> fillers;
};

namespace CorrectionTables {

inline constexpr std::u16string_view englishFillers[] = {
    u"um",        u"uh",       u"eh",       u"ah",        u"er",       u"uhm",    u"umm",
    u"uhh",       u"hmm",      u"hm",       u"mm",        u"mmm",      u"like",   u"basically",
    u"literally", u"actually", u"honestly", u"obviously", u"you know", u"i mean", u"kind of",
    u"sort of",   u"right",    u"okay so",  u"so yeah",
};
inline constexpr std::u16string_view polishFillers[] = {
    u"yyy",       u"eee",     u"no",         u"no i",      u"znaczy",   u"wiesz",    u"jakby",
    u"tak jakby", u"w sumie", u"generalnie", u"właściwie", u"no wiesz", u"tego",     u"kurde",
    u"po prostu", u"tam",     u"takie tam",  u"no nie",    u"wie pan",  u"wie pani",
};
inline constexpr std::u16string_view germanFillers[] = {
    u"äh",       u"ähm",       u"öhm",       u"hm",         u"also",
    u"halt",     u"quasi",     u"sozusagen", u"eigentlich", u"irgendwie",
    u"na ja",    u"naja",      u"genau",     u"weißt du",   u"du weißt schon",
    u"ich mein", u"ich meine",
};
inline constexpr std::u16string_view spanishFillers[] = {
    u"eh",      u"em",       u"este",        u"esto",      u"pues",     u"bueno",
    u"o sea",   u"es decir", u"como que",    u"sabes",     u"ya sabes", u"mira",
    u"digamos", u"entonces", u"básicamente", u"la verdad", u"tipo",     u"onda",
};
inline constexpr std::u16string_view frenchFillers[] = {
    u"euh",   u"heu",    u"bah",     u"ben",     u"donc",    u"alors",
    u"genre", u"quoi",   u"tu vois", u"tu sais", u"en fait", u"du coup",
    u"voilà", u"disons", u"enfin",   u"bon",     u"bref",
};
inline constexpr std::u16string_view italianFillers[] = {
    u"ehm",     u"eh",     u"uhm",    u"cioè",       u"tipo", u"praticamente",
    u"insomma", u"allora", u"dunque", u"diciamo",    u"sai",  u"capito",
    u"appunto", u"ecco",   u"vabbè",  u"in pratica",
};
inline constexpr std::u16string_view portugueseFillers[] = {
    u"é",          u"hm",         u"tipo",  u"então",  u"né",   u"sabe", u"assim",   u"basicamente",
    u"na verdade", u"quer dizer", u"enfim", u"pois é", u"olha", u"veja", u"digamos", u"bom",
};
inline constexpr std::u16string_view russianFillers[] = {
    u"э",         u"эм",     u"ну",      u"как бы",      u"типа",   u"короче",
    u"вот",       u"значит", u"в общем", u"ну типа",     u"слушай", u"знаешь",
    u"понимаешь", u"блин",   u"то есть", u"так сказать",
};
inline constexpr std::u16string_view japaneseFillers[] = {
    u"あの", u"えーと",   u"ええと", u"その", u"なんか",
    u"まあ", u"ちょっと", u"えー",   u"あー", u"うーん",
};
inline constexpr std::u16string_view chineseFillers[] = {
    u"那个", u"这个", u"嗯", u"额", u"就是", u"然后", u"所以说", u"对吧",
};

} // namespace CorrectionTables

/// The ten languages; the first one stands for those that are not here.
inline constexpr std::array correctionLanguages{
    CorrectionLanguage{u"en", true, CorrectionTables::englishFillers},
    CorrectionLanguage{u"pl", true, CorrectionTables::polishFillers},
    CorrectionLanguage{u"de", true, CorrectionTables::germanFillers},
    CorrectionLanguage{u"es", true, CorrectionTables::spanishFillers},
    CorrectionLanguage{u"fr", true, CorrectionTables::frenchFillers},
    CorrectionLanguage{u"it", true, CorrectionTables::italianFillers},
    CorrectionLanguage{u"pt", true, CorrectionTables::portugueseFillers},
    CorrectionLanguage{u"ru", true, CorrectionTables::russianFillers},
    CorrectionLanguage{u"ja", false, CorrectionTables::japaneseFillers},
    CorrectionLanguage{u"zh", false, CorrectionTables::chineseFillers},
};

} // namespace Velloro
