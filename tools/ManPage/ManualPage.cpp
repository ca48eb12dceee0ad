// The manual page in roff with the man(7) macros.
#include "ManPage/Model.h"

#include <cstdint>
#include <cstdio>

namespace manpage {

namespace {

// \p text escaped for roff: backslashes and hyphens, and every character
// outside ASCII as \[uXXXX] so that no input encoding has to be guessed.
std::string roff(const std::string &text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      const std::size_t length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
      std::uint32_t value = c & (0x7F >> length);
      for (std::size_t k = 1; k < length && i + 1 < text.size(); ++k)
        value = (value << 6) | (static_cast<unsigned char>(text[++i]) & 0x3F);
      char code[16];
      std::snprintf(code, sizeof code, "\\[u%04X]", value);
      out += code;
    }
  }
  return out;
}

// A text line that roff does not take for a request.
std::string textLine(const std::string &text) {
  std::string escaped = roff(text);
  if (escaped.starts_with(".") || escaped.starts_with("'"))
    escaped.insert(0, "\\&");
  return escaped + "\n";
}

// "<label>" in \p text in italics.
std::string withPlaceholders(const std::string &text) {
  std::string out;
  std::size_t at = 0;
  for (std::size_t open; (open = text.find('<', at)) != std::string::npos;) {
    const std::size_t close = text.find('>', open);
    if (close == std::string::npos)
      break;
    out += roff(text.substr(at, open - at)) + "\\fI" +
           roff(text.substr(open + 1, close - open - 1)) + "\\fR";
    at = close + 1;
  }
  return out + roff(text.substr(at));
}

std::string upperCase(std::string text) {
  for (char &c : text)
    if (c >= 'a' && c <= 'z')
      c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::string bold(const std::string &text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(const std::string &text) {
  return "\\fI" + roff(text) + "\\fR";
}

// The synopsis of a command: its name and options as the usage shows them.
std::string synopsis(const std::string &name, const Command &command) {
  std::string text = ".B " + roff(name) + "\n";
  for (const Option &option : command.options) {
    if (&option == &command.options.back())
      continue; // the help option, which the usage leaves out too
    std::string form = bold(option.preferredName());
    if (option.valueName)
      form += " " + italic(*option.valueName);
    text += option.required ? form + "\n" : "[" + form + "]\n";
  }
  return text;
}

std::string optionList(const Command &command) {
  std::string text;
  for (const Option &option : command.options) {
    text += ".TP\n";
    for (std::size_t i = 0; i < option.names.size(); ++i)
      text += (i ? ", " : "") + bold(option.names[i]);
    if (option.valueName)
      text += " " + italic(*option.valueName);
    text += "\n" + textLine(option.abstract);
  }
  return text;
}

void addDefinition(std::string &page, const std::string &term,
                   const std::string &body) {
  page += ".TP\n" + term + "\n" + body;
}

const char *const examples = R"(Sign in; the username, password and API key are asked for without echo:
.PP
.RS
.nf
kestrunecli config \-\-signin \-\-hostname https://uem.example.com \e
    \-\-group\-id Acme\-Mac
.fi
.RE
.PP
Publish an installer with its metadata and icon:
.PP
.RS
.nf
kestrunecli upload \-\-installer\-path Notes\-2.4.pkg \e
    \-\-metadata\-path Notes\-2.4.plist \-\-icon\-path Notes.png
.fi
.RE
.PP
Publish into another organization group, which stays chosen for later
uploads:
.PP
.RS
.nf
kestrunecli upload \-i Notes\-2.4.pkg \-m Notes\-2.4.plist \-g Acme\-Lab
.fi
.RE
.PP
Show the account, then sign out:
.PP
.RS
.nf
kestrunecli config \-\-list
kestrunecli config \-\-signout
.fi
.RE
)";

} // namespace

std::string manualPage(const Tool &tool, const std::string &version,
                       const std::string &date) {
  const std::string name = tool.root.name;
  std::string page =
      ".\\\" Generated from the command declarations of " + name + ".\n";
  page += ".TH " + roff(upperCase(name)) + " 1 " + date + " \"" +
          roff(name + " " + version) + "\" \"User Commands\"\n";
  // Option names are not to be split at their hyphens.
  page += ".nh\n.ad l\n";
  page += ".SH NAME\n" + roff(name) + " \\- " + roff(tool.root.abstract) + "\n";
  page += ".SH SYNOPSIS\n" + synopsis(name, tool.root) + "\\fIcommand\\fR\n";
  for (const Command &command : tool.subcommands)
    page += ".br\n" + synopsis(name + " " + command.name, command);

  page += ".SH DESCRIPTION\n" + textLine(tool.root.abstract + ".");
  page += ".PP\n" + textLine(
      "It signs in to a device-management console once, keeps the account "
      "in a secure store (see FILES), and publishes Mac applications to the "
      "console with that account. Every message, failures included, goes to "
      "standard output; a wrong command line is reported on standard error "
      "together with the command's usage.");
  page += ".SH OPTIONS\n" + optionList(tool.root);
  for (const Command &command : tool.subcommands) {
    page += ".SH \"" + roff(upperCase(name + " " + command.name)) + "\"\n";
    page += textLine(command.abstract) + optionList(command);
  }

  page += ".SH ENVIRONMENT\n";
  addDefinition(page, ".B XDG_DATA_HOME",
                textLine("The folder that holds the file store (see FILES)."));
  addDefinition(page, ".B HOME", textLine("The home folder."));
  addDefinition(page, ".BR DBUS_SESSION_BUS_ADDRESS \", \" XDG_RUNTIME_DIR",
                textLine("Where the D-Bus session bus is found; the Secret "
                         "Service on it keeps the account when it runs."));
  addDefinition(page,
                ".BR https_proxy \", \" HTTPS_PROXY \", \" http_proxy \", \" "
                "ALL_PROXY \", \" no_proxy \", \" NO_PROXY",
                textLine("The proxy to reach the console through, and the "
                         "hosts to reach directly, read as curl(1) reads "
                         "them."));
  addDefinition(page,
                ".BR CURL_CA_BUNDLE \", \" SSL_CERT_FILE \", \" SSL_CERT_DIR",
                textLine("The certificates that a console's TLS certificate "
                         "is checked against, instead of the system's."));
  addDefinition(page, ".B TERM",
                textLine("Output is styled only on a terminal whose type is "
                         "not dumb."));

  page += ".SH FILES\n";
  addDefinition(page, italic(tool.fileStoreUnderDataHome),
                textLine("The file store of the account, used when no "
                         "Secret Service is reachable."));
  addDefinition(page, italic(tool.fileStoreUnderHome),
                textLine("The same when XDG_DATA_HOME is not set. A lock file, "
                         "keychain.lock, lies beside it. In the Secret "
                         "Service the account's items carry the attributes "
                         "service=" +
                         tool.accountService + " and account=<item>."));
  addDefinition(page, italic(tool.bundlePlist),
                textLine("The application whose version --version prints."));

  page += ".SH \"EXIT STATUS\"\n";
  for (const ExitStatus &row : tool.exitStatuses) {
    std::string body = row.caseName.empty() ? "" : bold(row.caseName);
    if (!row.meaning.empty())
      body += (body.empty() ? "" : ": ") + withPlaceholders(row.meaning);
    addDefinition(page, ".B " + std::to_string(row.code),
                  (body.empty() ? std::string("\\&") : body) + "\n");
  }
  page += ".PP\n" + textLine("Code " + std::to_string(tool.otherFailureCode) +
                             " is also the code of any other failure that "
                             "reaches the argument parser.");
  page += ".SH EXAMPLES\n";
  page += examples;
  page += ".SH \"SEE ALSO\"\n.BR curl (1),\n.BR secret\\-tool (1)\n";
  return page;
}

} // namespace manpage
