#include "apps/orva_fire/html.h"

#include <cstdint>

namespace orva_fire {
namespace {

const char k_replacement[] = "\xEF\xBF\xBD";

// Length of the UTF-8 sequence at `at`, 0 if there is none; its character in `value`.
size_t sequence_at(const std::string& text, size_t at, uint32_t& value) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[at + i]); };
    const uint8_t first = byte(0);
    const size_t length = first < 0x80 ? 1 : first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : first >> 3 == 30 ? 4 : 0;
    if (length == 0 || at + length > text.size()) return 0;
    value = length == 1 ? first : first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if (byte(i) >> 6 != 2) return 0;
        value = value << 6 | (byte(i) & 0x3Fu);
    }
    static const uint32_t k_least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value < k_least[length] || surrogate || value > 0x10FFFF ? 0 : length;
}

bool is_unwanted(uint32_t c) {
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0);
    const bool turns = c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    const bool breaks = c == 0x2028 || c == 0x2029;
    const bool none = (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE;
    return control || turns || breaks || none;
}

const char* entity(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return nullptr;
    }
}

const char k_style[] = R"(
:root{color-scheme:light dark;--page:#f6f5f2;--card:#fff;--ink:#1d1c1a;--soft:#65615a;--line:#d9d5cc;--fire:#c62f10;
--near:#d98a00;--motion:#7d8b99;--bad:#7a3fb0;--ok:#2f7d46;--track:#eceae4}
@media (prefers-color-scheme:dark){:root{--page:#161514;--card:#211f1d;--ink:#ece8e1;--soft:#a9a298;--line:#3b3833;
--fire:#ff6a45;--near:#f0b03c;--motion:#8e9dac;--bad:#c08af0;--ok:#6cc58a;--track:#2b2926}}
*{box-sizing:border-box}
body{margin:0;overflow-wrap:anywhere;background:var(--page);color:var(--ink);font:16px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,sans-serif}
main{max-width:64rem;margin:0 auto;padding:1rem}
h1{font-size:1.5rem;line-height:1.25;margin:.5rem 0 0}
h2{font-size:1.15rem;margin:2rem 0 .5rem}
h3{font-size:1rem;margin:1rem 0 .25rem}
p{margin:.4rem 0}a{color:inherit}small,.soft{color:var(--soft)}
.card{background:var(--card);border:1px solid var(--line);border-radius:.6rem;padding:.9rem 1rem;margin:.75rem 0}
.verdict{border-left:.4rem solid var(--ok);font-size:1.1rem}.verdict.fire{border-left-color:var(--fire)}
.verdict.bad{border-left-color:var(--bad)}
.facts{display:grid;grid-template-columns:repeat(auto-fit,minmax(9rem,1fr));gap:.75rem;margin:.75rem 0}
.facts div{background:var(--card);border:1px solid var(--line);border-radius:.6rem;padding:.5rem .8rem}
.facts b{display:block;font-size:1.15rem}
.lane{margin:.35rem 0}.lane span{font-size:.85rem;color:var(--soft)}
.lane svg{display:block;width:100%;height:1.6rem;background:var(--track);border-radius:.2rem}
.axis{display:flex;justify-content:space-between;font-size:.8rem;color:var(--soft)}
.f-fire{fill:var(--fire)}.f-near{fill:var(--near)}.f-motion{fill:var(--motion)}.f-bad{fill:var(--bad)}
.s-mark{stroke:var(--ink);stroke-width:1;stroke-dasharray:4 4;vector-effect:non-scaling-stroke}
table{border-collapse:collapse;width:100%;font-size:.95rem}
th,td{text-align:left;vertical-align:top;padding:.45rem .6rem;border-bottom:1px solid var(--line);min-width:5.2rem}
th{color:var(--soft);font-weight:600}
img{max-width:100%;height:auto;border-radius:.3rem;display:block}
.shots{display:flex;flex-wrap:wrap;gap:.75rem}.shots figure{margin:0;flex:1 1 14rem;max-width:30rem}
figcaption{font-size:.85rem;color:var(--soft)}
.pixels img{image-rendering:pixelated}
@media (max-width:40rem){table,tbody,tr,td{display:block}thead{display:none}tr{background:var(--card);border:1px solid
var(--line);border-radius:.6rem;margin:.6rem 0;padding:.3rem .2rem}td{border:0;padding:.2rem .6rem}
td[data-l]::before{content:attr(data-l) ": ";color:var(--soft)}}
@media print{:root{--page:#fff;--card:#fff;--ink:#000;--soft:#444;--line:#bbb;--fire:#c62f10;--near:#d98a00;
--motion:#7d8b99;--bad:#7a3fb0;--ok:#2f7d46;--track:#eee;color-scheme:light}body{font-size:11pt}main{max-width:none;
padding:0}.verdict,.zone,.facts div,tr,figure{break-inside:avoid}h2,h3{break-after:avoid}
*{-webkit-print-color-adjust:exact;print-color-adjust:exact}}
)";

}  // namespace

std::string html_text(const std::string& text) {
    std::string safe;
    for (size_t i = 0; i < text.size();) {
        uint32_t value = 0;
        const size_t length = sequence_at(text, i, value);
        if (value == '\n' || value == '\t' || value == '\r') {
            safe += ' ';
        } else if (length == 0 || is_unwanted(value)) {
            safe += k_replacement;
        } else if (const char* written = entity(text[i])) {
            safe += written;
        } else {
            safe.append(text, i, length);
        }
        i += length == 0 ? 1 : length;
    }
    return safe;
}

std::string url_text(const std::string& name) {
    static const char k_digits[] = "0123456789ABCDEF";
    static const std::string k_plain = "-._~/";
    std::string address;
    for (const char c : name) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (letter || k_plain.find(c) != std::string::npos) {
            address += c;
        } else {
            const auto byte = static_cast<uint8_t>(c);
            address += {'%', k_digits[byte >> 4], k_digits[byte & 15]};
        }
    }
    return address;
}

std::string data_uri(const std::string& type, const std::string& bytes) {
    static const char k_letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string uri = "data:" + type + ";base64,";
    uri.reserve(uri.size() + (bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](size_t at) { return at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : 0u; };
        const uint32_t three = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
        uri += k_letters[three >> 18];
        uri += k_letters[three >> 12 & 63];
        uri += i + 1 < bytes.size() ? k_letters[three >> 6 & 63] : '=';
        uri += i + 2 < bytes.size() ? k_letters[three & 63] : '=';
    }
    return uri;
}

std::string page_start(const std::string& title, const std::string& pictures) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
           "img-src " +
           pictures + "\">\n<title>" + html_text(title) + "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>" +
           k_style + "</style>\n</head>\n<body>\n<main>\n";
}

std::string page_end() {
    return "</main>\n</body>\n</html>\n";
}

}  // namespace orva_fire
