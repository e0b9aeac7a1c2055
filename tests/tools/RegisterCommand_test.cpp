#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

using RegisterCommand = orx_test::CommandTest;

TEST_F(RegisterCommand, AddsAPictureToANewDatabase) {
  const ProcessResult result = Run({"register", Picture(), database_});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "Registered " + Picture() + " as picture 1\n");
  EXPECT_EQ(Cell("SELECT FullPath FROM ImageTable WHERE id = 1"), Picture());
}

TEST_F(RegisterCommand, AddsFilmsAndSounds) {
  EXPECT_EQ(Run({"register", Film(), database_}).output, "Registered " + Film() + " as film 1\n");
  EXPECT_EQ(Run({"register", Sound(), database_}).output,
            "Registered " + Sound() + " as sound 2\n");
}

TEST_F(RegisterCommand, AddsAFileOnce) {
  Run({"register", Picture(), database_});
  const ProcessResult result = Run({"register", Picture(), database_});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, Picture() + " is registered already, as picture 1\n");
  EXPECT_EQ(Cell("SELECT count(*) FROM ObjectTable"), "1");
}

TEST_F(RegisterCommand, StoresTheWholePath) {
  Run({"register", card_ + "/DCIM/./100ORXSC/../100ORXSC/ORXA0001.JPG", database_});
  EXPECT_EQ(Cell("SELECT FullPath FROM ObjectTable"), Picture());
}

TEST_F(RegisterCommand, FillsTheItemThatAClientCreated) {
  Run({"register", Picture(), database_});
  const ProcessResult result =
      Run({"register", card_ + "/DCIM/100ORXSC/ORXA0002.JPG", database_, "--parent", "1"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "Registered " + card_ + "/DCIM/100ORXSC/ORXA0002.JPG as picture 1\n");
  EXPECT_EQ(Cell("SELECT Width FROM ImageTable WHERE id = 1"), "1024");
}

TEST_F(RegisterCommand, RefusesAnItemThatIsNotThereOrOfAnotherKind) {
  Run({"register", Picture(), database_});
  ExpectFailure({"register", Film(), database_, "--parent", "9"},
                "database '" + database_ + "' has no item 9");
  ExpectFailure({"register", Film(), database_, "--parent", "1"},
                "item 1 is a picture, which '" + Film() + "' is not");
  ExpectFailure({"register", Film(), database_, "--parent", "1 or 1"},
                "'1 or 1' is no id: ids are numbers");
  EXPECT_EQ(Cell("SELECT count(*) FROM ObjectTable"), "1");
}

TEST_F(RegisterCommand, MakesNoDatabaseForAnItemThatCannotBeThere) {
  ExpectFailure({"register", Picture(), database_, "--parent", "1"},
                "database '" + database_ + "' has no item 1");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(RegisterCommand, TellsWhyAFileIsRefused) {
  ExpectFailure({"register", card_ + "/README.TXT", database_},
                "'" + card_ + "/README.TXT': not recognised as a picture, film or sound");
  ExpectFailure({"register", card_ + "/DCIM/101ORXSC/ORXA0004.JPG", database_},
                "'" + card_ + "/DCIM/101ORXSC/ORXA0004.JPG': no readable EXIF block");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(RegisterCommand, RefusesAPathThatTheDatabaseCannotHold) {
  const std::string path = dir_.Path("a\"b.jpg");
  std::filesystem::copy(Picture(), path);
  ExpectFailure({"register", path, database_}, "'" + path + "': its path has a double quote in it");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(RegisterCommand, RefusesWhatIsNoFile) {
  ExpectFailure({"register", card_, database_}, "'" + card_ + "' is a folder, not a file");
  ExpectFailure({"register", dir_.Path("gone"), database_},
                "file '" + dir_.Path("gone") + "': No such file or directory");
  ExpectFailure({"register", "/dev/null", database_}, "'/dev/null' is not a regular file");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(RegisterCommand, RefusesADatabaseThatIsNone) {
  ExpectFailure({"register", Picture(), card_}, "database '" + card_ + "' is a folder");
  ExpectFailure({"register", Picture(), card_ + "/README.TXT"},
                "database '" + card_ + "/README.TXT': file is not a database");
}

}  // namespace
