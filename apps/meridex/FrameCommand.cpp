#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "Cli.h"
#include "Commands.h"
#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XmlDocument.h>

namespace meridex::cli {
namespace {

std::size_t CountElements(const XmlNode& node) {
    std::size_t count = 0;
    // Iterative: documents may nest thousands of levels deep.
    std::vector<XmlNode> pending{node};
    while (!pending.empty()) {
        XmlNode current = pending.back();
        pending.pop_back();
        ++count;
        for (XmlNode child = current.FirstChildElement(); child; child = child.NextSiblingElement()) pending.push_back(child);
    }
    return count;
}

void AddXmlCommand(CLI::App& app, int& exitCode) {
    auto* xml = app.add_subcommand("xml", "Check XML documents the way the library loads them");
    xml->require_subcommand(1);
    auto* check = xml->add_subcommand("check", "Load each file; print its root and size, or why it was refused (exit 3)");
    auto files = std::make_shared<std::vector<std::string>>();
    check->add_option("FILE", *files, "XML documents")->required();
    AddJsonFlag(check);
    check->callback([files, &exitCode] {
        Json results = Json::array();
        for (const std::string& file : *files) {
            std::string error;
            XmlDocument doc = XmlDocument::Load(file, &error);
            if (!doc) {
                exitCode = kBadInput;
                if (JsonOutput()) results.push_back({{"file", file}, {"ok", false}, {"error", error}});
                else std::cout << file << ": refused: " << error << '\n';
                continue;
            }
            XmlNode root = doc.DocumentElement();
            const std::string name = root ? root.Name() : std::string();
            const std::size_t elements = root ? CountElements(root) : 0;
            if (JsonOutput())
                results.push_back({{"file", file}, {"ok", true}, {"root", name}, {"elements", elements}});
            else
                std::cout << file << ": root " << (root ? name : "(none)") << ", " << elements << " elements\n";
        }
        if (JsonOutput()) PrintJson({{"files", results}});
    });
}

// "-" reads the text from standard input (one trailing line end dropped), so
// a password need not appear on the command line.
std::string TextArgument(const std::string& text) {
    if (text != "-") return text;
    std::string input((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    if (!input.empty() && input.back() == '\n') input.pop_back();
    if (!input.empty() && input.back() == '\r') input.pop_back();
    return input;
}

void AddBase64Command(CLI::App& app) {
    auto* base64 = app.add_subcommand("base64", "Base64 as the legacy host stored passwords (windows-1252 text)");
    base64->require_subcommand(1);
    auto text = std::make_shared<std::string>();
    auto* encode = base64->add_subcommand("encode", "Encode TEXT (- reads standard input)");
    encode->add_option("TEXT", *text)->required();
    AddJsonFlag(encode);
    encode->callback([text] {
        const std::string plain = TextArgument(*text);
        if (!Text::IsValidUtf8(plain)) throw Failure(kBadInput, "the text is not valid UTF-8");
        if (!Text::FitsWindows1252(plain))
            throw Failure(kBadInput, "the text holds characters that windows-1252 cannot hold; "
                                     "the legacy host could not read them back");
        const std::string encoded = Base64Encoder().Encode(plain);
        if (JsonOutput()) PrintJson({{"text", plain}, {"base64", encoded}});
        else std::cout << encoded << '\n';
    });
    auto* decode = base64->add_subcommand("decode", "Decode TEXT (- reads standard input)");
    decode->add_option("TEXT", *text)->required();
    AddJsonFlag(decode);
    decode->callback([text] {
        const std::string encoded = TextArgument(*text);
        std::string plain;
        try {
            plain = Base64Encoder().Decode(encoded);
        } catch (const Error& e) {
            throw Failure(kBadInput, "not Base64: " + e.Description());
        }
        if (JsonOutput()) PrintJson({{"base64", encoded}, {"text", plain}});
        else std::cout << plain << '\n';
    });
}

std::uintmax_t SizeOf(const std::string& file) {
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(file, ec);
    return ec ? 0 : size;
}

void AddLogErrorCommand(CLI::App& app) {
    struct Args {
        std::string log;
        std::int32_t number = 0;
        std::string description;
        std::string context;
    };
    auto args = std::make_shared<Args>();
    auto* log = app.add_subcommand("log-error", "Append a line to an error log, as the library's error handler does");
    log->add_option("--log", args->log, "the error log file")->required();
    log->add_option("NUMBER", args->number)->required();
    log->add_option("DESCRIPTION", args->description)->required();
    log->add_option("CONTEXT", args->context, "object:routine")->required();
    AddJsonFlag(log);
    log->callback([args] {
        // The handler traps its own failures, so the log's growth tells whether the line got there.
        const std::uintmax_t before = SizeOf(args->log);
        ErrorHandler handler;
        handler.setErrorLogFile(args->log);
        handler.setLogErrors(true);
        handler.LogError(args->number, args->description, args->context);
        if (SizeOf(args->log) <= before)
            throw Failure(kWriteFailed, "could not append to the error log " + args->log +
                                            " (does its folder exist, and may it be written?)");
        if (JsonOutput()) PrintJson({{"log", args->log}, {"number", args->number}, {"written", true}});
    });
}

}  // namespace

void AddFrameCommands(CLI::App& app, int& exitCode) {
    AddXmlCommand(app, exitCode);
    AddBase64Command(app);
    AddLogErrorCommand(app);
}

}  // namespace meridex::cli
