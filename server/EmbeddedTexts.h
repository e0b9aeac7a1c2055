// Files built into the program: the descriptions of the services and the page for people.
#pragma once

namespace orxscan {  // where cmake/embed_texts.cmake puts them

extern const char kContentDirectoryXml[];
extern const char kConnectionManagerXml[];
extern const char kRegistrarXml[];
extern const char kPageHtml[];
extern const char kPageStyle[];
extern const char kPageScript[];
extern const char kContentDirectoryXmlSha256[];
extern const char kConnectionManagerXmlSha256[];
extern const char kRegistrarXmlSha256[];
extern const char kPageHtmlSha256[];
extern const char kPageStyleSha256[];
extern const char kPageScriptSha256[];

}  // namespace orxscan
