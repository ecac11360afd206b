#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
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
    auto* check = xml->add_subcommand("check", "Load each file; print its root and size, or why it was refused");
    auto files = std::make_shared<std::vector<std::string>>();
    check->add_option("FILE", *files, "XML documents")->required();
    check->callback([files, &exitCode] {
        for (const std::string& file : *files) {
            std::string error;
            XmlDocument doc = XmlDocument::Load(file, &error);
            if (!doc) {
                std::cout << file << ": refused: " << error << '\n';
                exitCode = 1;
                continue;
            }
            XmlNode root = doc.DocumentElement();
            std::cout << file << ": root " << (root ? root.Name() : "(none)") << ", "
                      << (root ? CountElements(root) : 0) << " elements\n";
        }
    });
}

void AddBase64Command(CLI::App& app, int& exitCode) {
    auto* base64 = app.add_subcommand("base64", "Base64 as the legacy host stored passwords (windows-1252 text)");
    base64->require_subcommand(1);
    auto text = std::make_shared<std::string>();
    auto* encode = base64->add_subcommand("encode", "Encode TEXT");
    encode->add_option("TEXT", *text)->required();
    encode->callback([text] { std::cout << Base64Encoder().Encode(*text) << '\n'; });
    auto* decode = base64->add_subcommand("decode", "Decode TEXT");
    decode->add_option("TEXT", *text)->required();
    decode->callback([text, &exitCode] {
        try {
            std::cout << Base64Encoder().Decode(*text) << '\n';
        } catch (const Error& e) {
            std::cerr << "meridex: " << e.Description() << '\n';
            exitCode = 1;
        }
    });
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
    log->callback([args] {
        ErrorHandler handler;
        handler.setErrorLogFile(args->log);
        handler.setLogErrors(true);
        handler.LogError(args->number, args->description, args->context);
    });
}

}  // namespace

void AddFrameCommands(CLI::App& app, int& exitCode) {
    AddXmlCommand(app, exitCode);
    AddBase64Command(app, exitCode);
    AddLogErrorCommand(app);
}

}  // namespace meridex::cli
