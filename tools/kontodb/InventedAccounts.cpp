#include "tools/kontodb/InventedAccounts.h"

#include "accounts/AccountTable.h"
#include "jet/value/SortKey.h"

namespace kontodb {
namespace {

using base::Text;
using base::TextView;

constexpr TextView kFirstNames[] = {
    u"Agnes",      u"Albrecht", u"Alma",     u"Änne",       u"Anton",   u"August",   u"Bärbel",    u"Benno",
    u"Berta",      u"Björn",    u"Brigitte", u"Bruno",      u"Clara",   u"Dörte",    u"Eberhard",  u"Edeltraud",
    u"Emil",       u"Erna",     u"Falk",     u"Frieda",     u"Fritz",   u"Gerda",    u"Gesine",    u"Götz",
    u"Greta",      u"Günther",  u"Gudrun",   u"Hannes",     u"Hedwig",  u"Heidrun",  u"Heino",     u"Helga",
    u"Hinnerk",    u"Ida",      u"Ilse",     u"Ingo",       u"Jörg",    u"Jürgen",   u"Jutta",     u"Käthe",
    u"Karl-Heinz", u"Klaas",    u"Konrad",   u"Lieselotte", u"Lothar",  u"Lütje",    u"Marlies",   u"Mechthild",
    u"Moritz",     u"Nils",     u"Oskar",    u"Ottilie",    u"Paula",   u"René",     u"Rosemarie", u"Rüdiger",
    u"Ruprecht",   u"Sabine",   u"Sönke",    u"Sören",      u"Swantje", u"Thea",     u"Traute",    u"Ulrich",
    u"Ursula",     u"Veit",     u"Volker",   u"Waltraud",   u"Wiebke",  u"Wolfgang", u"Zita",
};

constexpr TextView kLastNames[] = {
    u"Achterberg",    u"Ährenkamp",  u"Amselgrund",   u"Bachofen",    u"Bärenklau",   u"Birkenstätt",  u"Bölkow",
    u"Brüggemann",    u"Büttner",    u"Dachsberg",    u"Distelmeyer", u"Dörfler",     u"Eichendorfer", u"Einöder",
    u"Fährmann",      u"Feldhüter",  u"Fischbeck",    u"Föhrenbach",  u"Freigang",    u"Fuchsgruber",  u"Gänsewein",
    u"Glockengießer", u"Grabbe",     u"Großkopf",     u"Grünhuber",   u"Habermehl",   u"Hägele",       u"Haselbach",
    u"Heßmann",       u"Hölzl",      u"Holzapfel",    u"Hüttenrauch", u"Igelbrink",   u"Jägerhuber",   u"Jöhnk",
    u"Kaltenegger",   u"Käsbohrer",  u"Kleinschmidt", u"Klößner",     u"Königshofer", u"Krähwinkel",   u"Kühnapfel",
    u"Langwasser",    u"Lerchenau",  u"Lößnitz",      u"Lüderitz",    u"Mäusbacher",  u"Meißner",      u"Möhrle",
    u"Mühlbrecht",    u"Nachtigall", u"Nüßlein",      u"Oberhäuser",  u"Öhlschläger", u"Ostermann",    u"Pfäffle",
    u"Plötz",         u"Quäck",      u"Rabenstein",   u"Räuschle",    u"Röhricht",    u"Rübsam",       u"Säuberlich",
    u"Schäufele",     u"Schlüter",   u"Schönbeck",    u"Seeländer",   u"Spätling",    u"Stöhr",        u"Strauß",
    u"Süßmilch",      u"Tännler",    u"Törber",       u"Uferkamp",    u"Überhorst",   u"Vogelsänger",  u"Wächtler",
    u"Weißenbühl",    u"Wöhrmann",   u"Wüstenhagen",  u"Zähringer",   u"Zöpfl",       u"Zürcher",      u"Zwölfer",
};

constexpr TextView kFolders[] = {
    u"C:\\Tolv\\Daten",       u"D:\\Tolv\\Büro",          u"\\\\SRV01\\Tolv\\Daten",      u"\\\\SRV02\\Tolv$\\Süd",
    u"\\\\NORD\\Tolv Server", u"E:\\Ablage\\Außendienst", u"\\\\HALLE-3\\Tolv\\Straße 5",
};

template <std::size_t Count>
TextView oneOf(Random& random, const TextView (&choices)[Count]) {
    return choices[random.below(Count)];
}

}  // namespace

Account InventedAccounts::next() {
    Account account;
    account.name = nextName();
    account.password = inventPassword();
    account.serverPath = inventPath();
    account.programUpdate = random_.chance(40);
    return account;
}

/// The plain forms run out after a few thousand; then come the longer ones, of which there are millions.
Text InventedAccounts::nextName() {
    constexpr int kPlainAttempts = 3;
    for (int attempt = 0;; ++attempt) {
        Text name = inventName(attempt >= kPlainAttempts);
        const base::Bytes key = jet::sortKey(name);
        if (usedNames_.emplace(key.begin(), key.end()).second) return name;
    }
}

Text InventedAccounts::inventName(bool manyForms) {
    const Text first(oneOf(random_, kFirstNames));
    Text last(oneOf(random_, kLastNames));
    const std::uint32_t form = random_.below(10);
    if (manyForms || form == 0) last += u"-" + Text(oneOf(random_, kLastNames));
    if (form == 1) last += u" (Außenstelle " + base::decimal(random_.below(manyForms ? 1000 : 20) + 1) + u")";
    return form < 7 ? first + u" " + last : last + u", " + first;
}

Text InventedAccounts::inventPassword() {
    constexpr TextView kDigits = u"0123456789abcdef";
    constexpr std::size_t kHexDigits = 64;
    if (random_.chance(30)) return Text(tolv::accountTable::kStoredInitialPassword);
    Text password;
    while (password.size() < kHexDigits)
        password.push_back(kDigits[random_.below(16)]);
    return password;
}

base::Value InventedAccounts::inventPath() {
    if (random_.chance(3)) return base::Null{};
    Text path(oneOf(random_, kFolders));
    if (random_.chance(50)) path += u"\\" + Text(oneOf(random_, kLastNames));
    if (random_.chance(40)) path += u"\\";
    return path;
}

}  // namespace kontodb
