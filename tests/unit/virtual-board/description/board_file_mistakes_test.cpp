// A mistake in a board file is reported in one line: file, line, reason.
#include <gtest/gtest.h>

#include <initializer_list>

#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

// The error of a board file, or "none".
std::string mistake(const std::string& toml) {
  try {
    parseBoard(toml, "board.toml");
    return "none";
  } catch (const BoardFileError& error) {
    return error.what();
  }
}

struct Mistake {
  std::string toml;
  const char* line;  // behind the file's name
};

void expectMistakes(std::initializer_list<Mistake> mistakes) {
  for (const Mistake& each : mistakes) {
    EXPECT_EQ(mistake(each.toml), std::string("board.toml:") + each.line) << each.toml;
  }
}

}  // namespace

TEST(BoardFileMistakes, UnknownKeys) {
  expectMistakes({
      {"devices = 2", "1: unknown key \"devices\" in the board file"},
      {"\n[boards]", "2: unknown key \"boards\" in the board file"},
      {"[board]\nports = 2", "2: unknown key \"ports\" in [board]"},
      {"[loop]\nlength = 2", "2: unknown key \"length\" in [loop]"},
      {"[loop]\ntaps = [ { at_m = 1, length_m = 1, x = 1 } ]", "2: unknown key \"x\" in taps"},
      {"[[device]]\n\nstate = 2", "3: unknown key \"state\" in [[device]]"},
      {"[[memory]]\ndevice = 0\naddress = 0\nbytes = \"00\"\nword = 2",
       "5: unknown key \"word\" in [[memory]]"},
      {"[[farend]]\nline = 0\nrequest = 1\nresponse = \"\"\nx = 1", "5: unknown key \"x\" in [[farend]]"},
      {"[[event]]\ndevice = 0\ntype = 2\ntime = 1", "4: unknown key \"time\" in [[event]]"},
      {"[[log]]\ndevice = 0\ncore = \"CP\"\ntext = \"\"\nx = 1", "5: unknown key \"x\" in [[log]]"},
      {"[[fault]]\ndevice = 0\nrequest = \"open\"\nx = 1", "4: unknown key \"x\" in [[fault]]"},
  });
}

TEST(BoardFileMistakes, WrongTypes) {
  expectMistakes({
      {"board = 1", "1: \"board\" must be a table"},
      {"device = 1", "1: \"device\" must be a list of tables"},
      {"[device]\nside = \"dp\"", "1: \"device\" must be a list of tables"},
      {"[board]\ndevices = \"2\"", "2: \"devices\" must be a whole number"},
      {"[board]\ndevices = 2.0", "2: \"devices\" must be a whole number"},
      {"[loop]\nlength_m = \"100\"", "2: \"length_m\" must be a number"},
      {"[loop]\nlength_m = true", "2: \"length_m\" must be a number"},
      {"[loop]\ncut = 1", "2: \"cut\" must be true or false"},
      {"[loop]\ncable = 5", "2: \"cable\" must be a text in quotes"},
      {"[loop]\ntaps = 5", "2: \"taps\" must be a list of tables"},
      {"[[device]]\nparams = 5", "2: \"params\" must be a table"},
      {"[[device]]\nparams = { usMargin = \"6\" }", "2: \"usMargin\" must be a whole number"},
      {"[[device]]\nserial = 1", "2: \"serial\" must be a text in quotes"},
      {"[[device]]\ndistortion_db = \"off\"", "2: \"distortion_db\" must be a number"},
      {"[[device]]\nflash = \"application\"", "2: \"flash\" must be a list of texts in quotes"},
      {"[[event]]\ndevice = 0\ntype = 2\nparams = 5", "4: \"params\" must be a list of whole numbers"},
      {"[[event]]\ndevice = 0\ntype = 2\nparams = [1,\n\"a\"]",
       "5: \"params\" must be a list of whole numbers"},
  });
}

TEST(BoardFileMistakes, ImpossibleValues) {
  expectMistakes({
      {"[board]\ndevices = 3", "2: \"devices\" must be between 0 and 2"},
      {"[board]\ndevices = -1", "2: \"devices\" must be between 0 and 2"},
      {"[board]\nseed = -1", "2: \"seed\" must be between 0 and 4294967295"},
      {"[loop]\ncable = \"CAT6\"", "2: \"cable\" must be one of CAD55, CAT5, T05u, T05b, T05h"},
      {"[loop]\nlength_m = -1", "2: \"length_m\" must be between 0 and 2000"},
      {"[loop]\nlength_m = nan", "2: \"length_m\" must be between 0 and 2000"},
      {"[loop]\nnoise_dbm_hz = 1", "2: \"noise_dbm_hz\" must be between -200 and 0"},
      {"[loop]\ntaps = [ { at_m = 101, length_m = 1 } ]", "2: \"at_m\" must be between 0 and 100"},
      {"[[line_fault]]\nkind = \"tap\"\nat_m = 101", "3: \"at_m\" must be between 0 and 100"},
      {"[[line_fault]]\nkind = \"leak\"\nat_m = 1",
       "2: \"kind\" must be one of tap, joint, section, water, noise, radio, imbalance, crosstalk, impulse, "
       "supply"},
      {"[[line_fault]]\nkind = \"tap\"\nfor_s = 5\nevery_s = 5",
       "4: \"every_s\" must be longer than \"for_s\""},
      {"[[line_fault]]\nkind = \"noise\"\nat_m = 1\nshape = [ { mhz = 1, dbm_hz = -100 } ]",
       "4: \"shape\" must have 2 to 64 points"},
      {"[[line_fault]]\nkind = \"impulse\"\nat_m = 1\nlevel_dbm_hz = -90\nlength_ms = 1\nfor_s = 5",
       "6: \"for_s\" needs impulses with a \"rate_hz\""},
      {"[[device]]\nside = \"co\"", "2: \"side\" must be one of dp, cpe"},
      {"[[device]]\nfirmware = \"1.9.4\"",
       "2: \"firmware\" must be four numbers of 0 to 255, chipset.ga.rc.profile"},
      {"[[device]]\nside = \"dp\"\nfirmware = \"2.9.4.106\"",
       "3: \"firmware\" is not of that side: chipsets 1 and 3 are dp, others cpe"},
      {"[[device]]\nboot = \"B0\"", "2: \"boot\" must be one of b0, b1, app"},
      {"[[device]]\nmac = \"02:00:5e:00:00\"", "2: \"mac\" must be six bytes, such as \"02:00:5e:00:00:01\""},
      {"[[device]]\nmac = \"02-00-5e-00-00-01\"",
       "2: \"mac\" must be pairs of hexadecimal digits with blanks or colons between them"},
      {"[[device]]\ntemperature_c = 200", "2: \"temperature_c\" must be between -40 and 125"},
      {"[[device]]\nvendor = \"ABCDEFGHI\"", "2: \"vendor\" must be at most 8 bytes"},
      {"[[device]]\nserial = \"123456789012345678901234567890123\"",
       "2: \"serial\" must be at most 32 bytes"},
      {"[[device]]\ndistortion_db = 45", "2: \"distortion_db\" must be between -200 and -20"},
      {"[[device]]\nflash = [\"app\"]",
       "2: \"flash\" must list some of bootloader, manufacturer, application, each once"},
      {"[[device]]\nflash = []\nboot = \"app\"",
       "3: \"boot\" asks for firmware that \"flash\" does not hold"},
      {"[[device]]\nboot = \"b1\"\nline = \"idle\"", "3: \"line\" needs application firmware that runs"},
      {"[[device]]\nline = \"up\"", "2: \"line\" must be one of idle, silent, handshake, training, showtime"},
      {"[[device]]\nline = \"showtime\"\n[[device]]\nline = \"idle\"",
       "2: \"line\" contradicts the other device's"},
      {"[[device]]\nline = \"showtime\"\n[[device]]\nside = \"dp\"", "2: \"line\" needs a dp and a cpe"},
      {"[[device]]\nline = \"showtime\"\n[[device]]\nboot = \"b0\"",
       "2: \"line\" needs application firmware that runs on both devices"},
      {"[loop]\ncut = true\n[[device]]\nline = \"showtime\"", "4: \"line\" needs a loop that is not cut"},
      {"[loop]\nlength_m = 600\n[[device]]\nline = \"showtime\"",
       "4: \"line\" needs a loop that is not too long to train"},
      {"[[device]]\n[[device]]\n[[device]]", "3: there are at most 2 devices"},
      {"[[memory]]\ndevice = 2\naddress = 0\nbytes = \"\"", "2: \"device\" must be between 0 and 1"},
      {"[board]\ndevices = 1\n[[event]]\ndevice = 1\ntype = 0", "4: device 1 is not on the board"},
      {"[[memory]]\ndevice = 0\naddress = 0x100000000\nbytes = \"\"",
       "3: \"address\" must be between 0 and 4294967295"},
      {"[[memory]]\ndevice = 0\naddress = 0\nbytes = \"1\"",
       "4: \"bytes\" must be pairs of hexadecimal digits with blanks or colons between them"},
      {"[[memory]]\ndevice = 0\naddress = 0\nbytes = \"0011\"",
       "4: \"bytes\" must be pairs of hexadecimal digits with blanks or colons between them"},
      {"[[memory]]\ndevice = 0\naddress = 0xFFFFFFFF\nbytes = \"00 11\"",
       "4: \"bytes\" reach past the end of memory"},
      {"[[farend]]\nline = 2\nrequest = 5\nresponse = \"\"", "2: \"line\" must be between 0 and 1"},
      {"[[farend]]\nline = 0\nrequest = 7\nresponse = \"\"", "3: \"request\" must be between 0 and 6"},
      {"[[farend]]\nline = 0\nrequest = 5\nerrno = \"EWHAT\"",
       "4: \"errno\" must be the name of an error, such as EIO"},
      {"[[event]]\ndevice = 0\nat_s = -1\ntype = 0", "3: \"at_s\" must be between 0 and 1e+09"},
      {"[[event]]\ndevice = 0\ntype = 0\nparams = [4294967296]",
       "4: \"params\" must hold numbers of 32 bits"},
      {"[[log]]\ndevice = 0\ncore = \"XXX\"\ntext = \"\"", "3: \"core\" must be one of FDU, FRM, CP"},
      {"[[log]]\ndevice = 0\ncore = \"FDU\"\ntext = \"\"\nline = 256",
       "5: \"line\" must be between 0 and 255"},
      {"[[log]]\ndevice = 0\ncore = \"CP\"\ntext = \"\"\nparams = [1,2,3,4,5,6,7,8,9,10,11,12,13]",
       "5: \"params\" must have at most 12 entries"},
      {"[[fault]]\ndevice = 0\nrequest = \"flashread\"",
       "3: \"request\" must be one of open, memread, memwrite, activate, imgdnld, flasherase, flashprog, "
       "logcfg, "
       "logread, eventread, farend"},
      {"[[fault]]\ndevice = 0\nrequest = \"open\"\nskip = -1",
       "4: \"skip\" must be between 0 and 4294967295"},
  });
  EXPECT_EQ(mistake("[[log]]\ndevice = 0\ncore = \"CP\"\ntext = \"" + std::string(128, 'x') + '"'),
            "board.toml:4: \"text\" must be at most 127 bytes");
}

TEST(BoardFileMistakes, MissingKeys) {
  expectMistakes({
      {"[loop]\ntaps = [ { at_m = 1 } ]", "2: taps needs \"length_m\""},
      {"[[line_fault]]\nat_m = 1", "1: [[line_fault]] needs \"kind\""},
      {"[[line_fault]]\nkind = \"tap\"\nlength_m = 1", "1: [[line_fault]] needs \"at_m\""},
      {"[[line_fault]]\nkind = \"noise\"\nat_m = 1",
       "1: [[line_fault]] needs either \"level_dbm_hz\" or \"shape\""},
      {"[[memory]]\naddress = 0\nbytes = \"\"", "1: [[memory]] needs \"device\""},
      {"[[memory]]\ndevice = 0\nbytes = \"\"", "1: [[memory]] needs \"address\""},
      {"[[memory]]\ndevice = 0\naddress = 0", "1: [[memory]] needs either \"bytes\" or \"dump\""},
      {"[[memory]]\ndevice = 0\naddress = 0\nbytes = \"\"\ndump = \"x\"",
       "1: [[memory]] needs either \"bytes\" or \"dump\""},
      {"[[farend]]\nrequest = 5\nresponse = \"\"", "1: [[farend]] needs \"line\""},
      {"[[farend]]\nline = 0\nresponse = \"\"", "1: [[farend]] needs \"request\""},
      {"[[farend]]\nline = 0\nrequest = 5", "1: [[farend]] needs either \"response\" or \"errno\""},
      {"[[event]]\ndevice = 0", "1: [[event]] needs \"type\""},
      {"[[log]]\ndevice = 0\ntext = \"\"", "1: [[log]] needs \"core\""},
      {"[[log]]\ndevice = 0\ncore = \"CP\"", "1: [[log]] needs \"text\""},
      {"[[fault]]\ndevice = 0", "1: [[fault]] needs \"request\""},
      {"[[fault]]\nrequest = \"open\"", "1: [[fault]] needs \"device\""},
  });
}

TEST(BoardFileMistakes, InLoopAndDeviceEvents) {
  expectMistakes({
      {"[[loop_event]]\nat_s = 1", "1: [[loop_event]] needs either \"cut\" or \"errors\""},
      {"[[loop_event]]\ncut = true\nerrors = 0.1", "1: [[loop_event]] needs either \"cut\" or \"errors\""},
      {"[[loop_event]]\nerrors = 0.1", "1: [[loop_event]] needs \"for_s\""},
      {"[[loop_event]]\nerrors = 1.5\nfor_s = 1", "2: \"errors\" must be between 0 and 1"},
      {"[[loop_event]]\ncut = 1", "2: \"cut\" must be true or false"},
      {"[[loop_event]]\ncut = true\nfor_s = 1", "3: unknown key \"for_s\" in [[loop_event]]"},
      {"[[device_event]]\nkind = \"hang\"", "1: [[device_event]] needs \"device\""},
      {"[[device_event]]\ndevice = 0", "1: [[device_event]] needs \"kind\""},
      {"[[device_event]]\ndevice = 0\nkind = \"melt\"", "3: \"kind\" must be one of hang, power_off"},
      {"[[device_event]]\ndevice = 2\nkind = \"hang\"", "2: \"device\" must be between 0 and 1"},
      {"[[device_event]]\ndevice = 1\nkind = \"hang\"\nfor_s = -1",
       "4: \"for_s\" must be between 0 and 1e+09"},
  });
}

TEST(BoardFileMistakes, InWhatAnOperatorAllows) {
  std::string many = "[spectrum]\npsdmask_us = [ ";
  for (int i = 0; i < 17; i++) {
    many += "{ tone = " + std::to_string(i) + ", dbm_hz = -80 }, ";
  }
  expectMistakes({
      {"[spectrum]\ncarmask = []", "2: unknown key \"carmask\" in [spectrum]"},
      {"[spectrum]\ncarmask_ds = [ { from = 5 } ]", "2: carmask_ds needs \"to\""},
      {"[spectrum]\ncarmask_ds = [ { from = 5, to = 4 } ]", "2: \"to\" must not be below \"from\""},
      {"[spectrum]\ncarmask_ds = [ { from = 5, to = 2048 } ]", "2: \"to\" must be between 0 and 2047"},
      {"[spectrum]\npsdmask_us = [ { tone = 5, dbm_hz = 1 } ]", "2: \"dbm_hz\" must be between -200 and 0"},
      {"[spectrum]\npsdmask_us = [ { tone = 5, dbm_hz = -80 }, { tone = 5, dbm_hz = -90 } ]",
       "2: \"tone\" must rise from point to point"},
      {"[spectrum]\nupbo = { a = 80 }", "2: upbo needs \"b\""},
      {"[spectrum]\nupbo = { a = 80, b = 101 }", "2: \"b\" must be between 0 and 100"},
      {"[spectrum]\nupbo = { a = 80, b = 1, forced_db = 129 }", "2: \"forced_db\" must be between 0 and 128"},
      {many + "]", "2: \"psdmask_us\" must have at most 16 entries"},
      {"[spectrum]\nupbo = { a = 100, b = 100 }\n[[device]]\nline = \"showtime\"",
       "4: \"line\" needs a loop that is not too long to train"},
  });
}

TEST(BoardFileMistakes, InCrashes) {
  const std::string good = "[[crash]]\ndevice = 0\nprocessor = \"cp\"\nassert_id = 1\n";
  EXPECT_EQ(mistake(good), "none");
  expectMistakes({
      {"[[crash]]\nprocessor = \"cp\"\nassert_id = 1", "1: [[crash]] needs \"device\""},
      {"[[crash]]\ndevice = 0\nassert_id = 1", "1: [[crash]] needs \"processor\""},
      {"[[crash]]\ndevice = 0\nprocessor = \"cp\"", "1: [[crash]] needs \"assert_id\""},
      {"[[crash]]\ndevice = 0\nprocessor = \"dsp\"\nassert_id = 1",
       "3: \"processor\" must be one of framer, fdu, cp"},
      {good + "params = [1, 2, 3, 4, 5, 6, 7, 8, 9]", "5: \"params\" must have at most 8 entries"},
      {good + "symbol_counter = 0", "5: \"symbol_counter\" must be between 1 and 4294967295"},
      {good + "tbm_phase = 4294967296", "5: \"tbm_phase\" must be between 0 and 4294967295"},
      {good + "line = 0", "5: unknown key \"line\" in [[crash]]"},
  });
}

TEST(BoardFileMistakes, InInterChipErrors) {
  expectMistakes({
      {"[[extcom]]\nerrors_per_s = 1", "1: [[extcom]] needs \"device\""},
      {"[[extcom]]\ndevice = 0", "1: [[extcom]] needs \"errors_per_s\""},
      {"[[extcom]]\ndevice = 0\nlane = 7\nerrors_per_s = 1", "3: \"lane\" must be between 0 and 6"},
      {"[[extcom]]\ndevice = 0\nerrors_per_s = -1", "3: \"errors_per_s\" must be between 0 and 1e+09"},
      {"[board]\ndevices = 1\n[[extcom]]\ndevice = 1\nerrors_per_s = 1", "4: device 1 is not on the board"},
  });
}

TEST(BoardFileMistakes, InStartUpParameters) {
  const std::string device = "[[device]]\n";
  expectMistakes({
      {device + "[device.params]\nusMargn = 60", "3: unknown key \"usMargn\" in params"},
      {device + "params = { PARAMS_usMargin = 60 }", "2: unknown key \"PARAMS_usMargin\" in params"},
      {device + "params = { usMargin = \"3c 00\" }", "2: \"usMargin\" must be a whole number"},
      {device + "params = { usMargin = 6.5 }", "2: \"usMargin\" must be a whole number"},
      {device + "params = { usMargin = 65536 }", "2: \"usMargin\" must be between -32768 and 65535"},
      {device + "params = { usMargin = -32769 }", "2: \"usMargin\" must be between -32768 and 65535"},
      {device + "\n[device.params]\nIARBands = 4294967296",
       "4: \"IARBands\" must be between -2147483648 and 4294967295"},
      {device + "params = { IARBands = -2147483649 }",
       "2: \"IARBands\" must be between -2147483648 and 4294967295"},
      {device + "params = { pad_1 = 5 }", "2: \"pad_1\" must be a text in quotes"},
      {device + "params = { pad_1 = \"01 02\" }", "2: \"pad_1\" must be 3 bytes"},
      {device + "params = { pad_1 = \"01 02 03 04\" }", "2: \"pad_1\" must be 3 bytes"},
      {device + "params = { pad_1 = \"01 02 0\" }",
       "2: \"pad_1\" must be pairs of hexadecimal digits with blanks or colons between them"},
  });
}

TEST(BoardFileMistakes, NotToml) {
  const std::string line = mistake("[board]\ndevices = \n");
  EXPECT_EQ(line.rfind("board.toml:2: ", 0), 0U) << line;
  EXPECT_EQ(line.find('\n'), std::string::npos);
}

TEST(BoardFileMistakes, MissingFiles) {
  try {
    readBoardFile("missing.toml");
    FAIL();
  } catch (const BoardFileError& error) {
    EXPECT_STREQ(error.what(), "missing.toml: No such file or directory");
  }
  try {
    readBoardFile("/tmp");
    FAIL();
  } catch (const BoardFileError& error) {
    EXPECT_STREQ(error.what(), "/tmp: Is a directory");
  }
  EXPECT_EQ(mistake("[[memory]]\ndevice = 0\ndump = \"missing.txt\""),
            "board.toml:3: missing.txt: No such file or directory");
  EXPECT_EQ(mistake("[[memory]]\ndevice = 0\ndump = \"/tmp\""), "board.toml:3: /tmp: Is a directory");
}

TEST(BoardFileMistakes, LinesThatAreNotOfADump) {
  for (const char* line :
       {"e3100000 00000007", "e3100000:00000007", "e3100000:", "e3100000: xyz", "> read memory 0 e3100000 4",
        "e3100000: 1 2 3 4 5", "fffffffe: 00000001", "1e3100000: 00000001", "e3100000: 100000001"}) {
    const TempFile dump(std::string("e3000000: 00000001\n") + line + '\n');
    EXPECT_EQ(mistake("[[memory]]\ndevice = 0\ndump = \"" + dump.path() + '"'),
              dump.path() + ":2: not a line \"address: word\"")
        << line;
  }
}

TEST(BoardFileMistakes, TooMuchMemory) {
  std::string dump;
  for (uint32_t page = 0; page <= SparseMemory::kMaxPages; page++) {
    char line[32];
    std::snprintf(line, sizeof line, "%8x: 00000001\n", page * SparseMemory::kPageSize);
    dump += line;
  }
  const TempFile file(dump);
  EXPECT_EQ(mistake("[[memory]]\ndevice = 0\ndump = \"" + file.path() + '"'),
            "board.toml:1: more than 16 MiB laid over a device's memory");
}

TEST(BoardFileMistakes, NamesThatNestTooDeeply) {
  std::string names = "a";
  for (int i = 1; i < 150000; i++) {
    names += ".a";
  }
  expectMistakes({
      {"\n" + names + " = 1", "2: names nest too deeply"},
      {"[" + names + "]", "1: names nest too deeply"},
      {"[board]\nx = { " + names + " = 1 }", "2: names nest too deeply"},
      {"a.a.a.a = 1", "1: unknown key \"a\" in the board file"},
  });
}

TEST(BoardFileMistakes, DotsThatJoinNoNames) {
  const std::string dots(1000, '.');
  for (const std::string& value : {'"' + dots + '"', "'" + dots + "'", "\"\"\"\n" + dots + "\"\"\"",
                                   "\"\\\"" + dots + '"', "1 # " + dots}) {
    EXPECT_EQ(mistake("x = " + value), "board.toml:1: unknown key \"x\" in the board file") << value;
  }
  std::string numbers;
  for (int i = 0; i < 1000; i++) {
    numbers += "0.5, ";
  }
  EXPECT_EQ(mistake("x = [" + numbers + "]"), "board.toml:1: unknown key \"x\" in the board file");
}

TEST(BoardFileMistakes, AreOnePrintableLine) {
  expectMistakes({{"\"a\\nb\\u001b[2Jc\" = 1", "1: unknown key \"a b?[2Jc\" in the board file"}});
  const std::string shown = mistake(std::string(100000, 'x') + " = 1");
  EXPECT_LT(shown.size(), 500U);
  EXPECT_TRUE(shown.ends_with("xxx...")) << shown;
}
