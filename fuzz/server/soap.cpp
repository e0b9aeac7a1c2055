// Bodies of control: parsed, and performed on a small catalogue; what is answered is XML again.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "CatalogueBuilder.h"
#include "ContentDirectory.h"
#include "Services.h"
#include "support/TempDir.h"

namespace {

using namespace orxserve;

struct World {
  World() {
    CatalogueBuilder builder("/card", &state, look);
    for (const char* name : {"/card/DCIM/A.JPG", "/card/DCIM/\xff<&\x01.JPG", "/card/B.JPG"}) {
      MediaRow row;
      row.path = name;
      row.size = 1000;
      row.mimeType = "image/jpeg";
      row.description = "a \"quoted\" <text>";
      builder.Add(row);
    }
    catalogues.Set(builder.Finish());
  }
  orx_test::TempDir dir;
  StateStore state{dir.path()};
  FileLook look;
  CatalogueHolder catalogues;
  ContentDirectory directory{catalogues};
  ConnectionManager connections{catalogues};
};

bool IsXml(const std::string& text) {
  SoapAction response;
  return ParseSoap(text, &response);
}

void Check(int error, const std::unique_ptr<Answer>& answer) {
  std::string text;
  if (error != kNoError) {
    text = SoapFault(error);
  } else {
    while (answer->Write(&text, text.size() + 1000)) {
    }
  }
  if (text.size() <= kLargestSoapBody && !IsXml(text)) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static World world;
  SoapAction action;
  if (!ParseSoap({reinterpret_cast<const char*>(data), size}, &action)) return 0;
  std::unique_ptr<Answer> answer;
  Check(world.directory.Perform(action, "http://10.0.0.1:8200", &answer), answer);
  answer.reset();
  Check(world.connections.Perform(action, &answer), answer);
  return 0;
}
