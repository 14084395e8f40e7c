// Texts for pages: everything that came from outside goes through html_text, and through nothing else.
#ifndef ORVA_APPS_ORVA_FIRE_HTML_H
#define ORVA_APPS_ORVA_FIRE_HTML_H

#include <string>

namespace orva_fire {

// A text as it may stand between tags and in quoted attributes. Bytes that are no UTF-8, control characters and marks
// that turn the direction of writing become U+FFFD; line ends and tabs become blanks.
std::string html_text(const std::string& text);

// A file name as a relative address. Every byte but letters, digits and a few marks is written as %XX.
std::string url_text(const std::string& name);

// Bytes as an address that holds them. type: "image/jpeg".
std::string data_uri(const std::string& type, const std::string& bytes);

// The beginning of a page up to <body>, with the style that all pages share, and its end. The page may load nothing:
// pictures: what its pictures may come from, in the words of a content security policy ("data:", "'self' data:").
std::string page_start(const std::string& title, const std::string& pictures);
std::string page_end();

}  // namespace orva_fire

#endif
