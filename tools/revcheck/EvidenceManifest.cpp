#include "EvidenceManifest.h"

#include "platform/retrieval/Digest.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

namespace norvane {
namespace {

using Json = nlohmann::ordered_json;

template <class Value>
Json value_or_null(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

template <class Value>
std::optional<Value> read_or_null(const Json& json) {
    return json.is_null() ? std::nullopt : std::optional(json.get<Value>());
}

template <class Element, class Make>
Json array_of(const std::vector<Element>& elements, const Make& make) {
    Json array = Json::array();
    for (const Element& element : elements) {
        array.push_back(make(element));
    }
    return array;
}

template <class Element, class Read>
std::vector<Element> read_array(const Json& json, const Read& read) {
    std::vector<Element> elements;
    for (const Json& each : json) {
        elements.push_back(read(each));
    }
    return elements;
}

Json to_json(const EvidenceRetrieval& retrieval) {
    return {{"url", retrieval.url},
            {"kind", retrieval.kind},
            {"from", retrieval.from},
            {"outcome", retrieval.outcome},
            {"error", retrieval.error},
            {"cause", retrieval.cause},
            {"remembered", retrieval.remembered},
            {"confirmed", retrieval.confirmed},
            {"milliseconds", retrieval.milliseconds},
            {"octets", retrieval.octets},
            {"age_seconds", retrieval.age_seconds},
            {"objects", retrieval.objects}};
}

EvidenceRetrieval read_retrieval(const Json& json) {
    return {.url = json.at("url"),
            .kind = json.at("kind"),
            .from = json.at("from"),
            .outcome = json.at("outcome"),
            .error = json.at("error"),
            .cause = json.at("cause"),
            .remembered = json.at("remembered"),
            .confirmed = json.at("confirmed"),
            .milliseconds = json.at("milliseconds"),
            .octets = json.at("octets"),
            .age_seconds = json.at("age_seconds"),
            .objects = json.at("objects")};
}

Json to_json(const EvidenceCheck& check) {
    return {{"time", check.time},
            {"certificates", array_of(check.certificates,
                                      [](const EvidenceCertificate& each) {
                                          return Json{{"name", each.name}, {"object", each.object}};
                                      })},
            {"consulted", check.consulted},
            {"retrievals", array_of(check.retrievals,
                                    [](const EvidenceRetrieval& each) { return to_json(each); })},
            {"clock_readings", array_of(check.readings, [](const EvidenceReading& each) {
                 return Json{{"clock", each.clock}, {"milliseconds", each.milliseconds}};
             })}};
}

EvidenceCheck read_check(const Json& json) {
    return {.time = json.at("time"),
            .certificates = read_array<EvidenceCertificate>(
                json.at("certificates"),
                [](const Json& each) {
                    return EvidenceCertificate{each.at("name"), each.at("object")};
                }),
            .consulted = json.at("consulted"),
            .retrievals = read_array<EvidenceRetrieval>(json.at("retrievals"), read_retrieval),
            .readings =
                read_array<EvidenceReading>(json.at("clock_readings"), [](const Json& each) {
                    return EvidenceReading{each.at("clock"), each.at("milliseconds")};
                })};
}

Json to_json(const EvidenceStores& stores) {
    return {{"root", stores.root},
            {"ca", stores.ca},
            {"certs", stores.certs},
            {"crls", value_or_null(stores.crls)},
            {"issuer", value_or_null(stores.issuer)}};
}

EvidenceStores read_stores(const Json& json) {
    return {.root = json.at("root"),
            .ca = json.at("ca"),
            .certs = json.at("certs"),
            .crls = read_or_null<ObjectNames>(json.at("crls")),
            .issuer = read_or_null<std::string>(json.at("issuer"))};
}

Json to_json(const EvidenceOptions& options) {
    return {
        {"time", value_or_null(options.time)}, {"timeout_ms", value_or_null(options.timeout_ms)},
        {"cache_only", options.cache_only},    {"accumulative", options.accumulative},
        {"strict_pkup", options.strict_pkup},  {"list", options.list}};
}

EvidenceOptions read_options(const Json& json) {
    return {.time = read_or_null<std::string>(json.at("time")),
            .timeout_ms = read_or_null<std::uint32_t>(json.at("timeout_ms")),
            .cache_only = json.at("cache_only"),
            .accumulative = json.at("accumulative"),
            .strict_pkup = json.at("strict_pkup"),
            .list = json.at("list")};
}

Json to_json(const std::map<std::string, EvidenceMember>& members) {
    Json json = Json::object();
    for (const auto& [name, member] : members) {
        json[name] = {{"sha256", member.sha256}, {"octets", member.octets}};
    }
    return json;
}

std::map<std::string, EvidenceMember> read_members(const Json& json) {
    std::map<std::string, EvidenceMember> members;
    for (const auto& [name, member] : json.items()) {
        members[name] = {member.at("sha256"), member.at("octets")};
    }
    return members;
}

Json parse(const std::string& text) {
    const auto guard = [](int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
        if (depth > static_cast<int>(max_manifest_nesting)) {
            throw BadEvidence("manifest.json is nested too deeply");
        }
        return true;
    };
    return Json::parse(text, guard);
}

Evidence from_json(const Json& json) {
    if (json.at("format") != evidence_format) {
        throw BadEvidence("manifest.json is of a format that this program does not know");
    }
    return {.program = json.at("program"),
            .options = read_options(json.at("options")),
            .settings = json.at("settings"),
            .limits = json.at("limits"),
            .strict_pkup = json.at("strict_pkup"),
            .faults = json.at("faults"),
            .stores = read_stores(json.at("stores")),
            .checks = read_array<EvidenceCheck>(json.at("checks"), read_check),
            .members = read_members(json.at("members"))};
}

/// Every object that the evidence names.
std::set<std::string> named_objects(const Evidence& evidence) {
    std::set<std::string> names;
    const auto add = [&names](const ObjectNames& more) { names.insert(more.begin(), more.end()); };
    const EvidenceStores& stores = evidence.stores;
    add(stores.root);
    add(stores.ca);
    std::ranges::for_each(stores.certs, add);
    add(stores.crls.value_or(ObjectNames()));
    if (stores.issuer) {
        names.insert(*stores.issuer);
    }
    for (const EvidenceCheck& check : evidence.checks) {
        for (const EvidenceCertificate& certificate : check.certificates) {
            names.insert(certificate.object);
        }
        add(check.consulted);
        for (const EvidenceRetrieval& retrieval : check.retrievals) {
            add(retrieval.objects);
        }
    }
    return names;
}

/// The others have names of their own.
bool is_named_after_content(const std::string& name, const std::string& content) {
    const auto type = name.ends_with(".crl") ? ObjectType::crl : ObjectType::certificate;
    return name == verdicts_name || name == records_name ||
           name == object_member_name(content, type);
}

EvidenceMember told(const std::string& content) {
    return {to_hex(Digester().add(content).finish()), content.size()};
}

} // namespace

std::string object_member_name(std::string_view encoded, ObjectType type) {
    return "objects/" + to_hex(Digester().add(encoded).finish()) +
           (type == ObjectType::crl ? ".crl" : ".cer");
}

std::string as_json_tells(std::string_view text) {
    return Json::parse(Json(text).dump(-1, ' ', true, Json::error_handler_t::replace));
}

std::string manifest_text(const Evidence& evidence) {
    const Json json = {
        {"format", evidence_format},
        {"program", evidence.program},
        {"options", to_json(evidence.options)},
        {"settings", evidence.settings},
        {"limits", evidence.limits},
        {"strict_pkup", evidence.strict_pkup},
        {"faults", evidence.faults},
        {"stores", to_json(evidence.stores)},
        {"checks",
         array_of(evidence.checks, [](const EvidenceCheck& each) { return to_json(each); })},
        {"members", to_json(evidence.members)}};
    constexpr int indent = 1;
    constexpr bool ascii_only = true;
    return json.dump(indent, ' ', ascii_only, Json::error_handler_t::replace) + "\n";
}

Evidence read_manifest(const std::string& text) {
    try {
        Evidence evidence = from_json(parse(text));
        if (manifest_text(evidence) != text) {
            throw BadEvidence("manifest.json is not as this program writes it");
        }
        return evidence;
    } catch (const Json::exception& fault) {
        throw BadEvidence(std::string("manifest.json is malformed: ") + fault.what());
    }
}

Members with_manifest(Evidence evidence, Members members) {
    evidence.members.clear();
    for (const auto& [name, content] : members) {
        evidence.members[name] = told(content);
    }
    members.emplace(manifest_name, manifest_text(evidence));
    return members;
}

Evidence read_evidence(const Members& members) {
    const auto manifest = members.find(std::string(manifest_name));
    if (manifest == members.end()) {
        throw BadEvidence("manifest.json is missing");
    }
    Evidence evidence = read_manifest(manifest->second);
    for (const auto& [name, content] : members) {
        if (name != manifest_name && !evidence.members.contains(name)) {
            throw BadEvidence("manifest.json does not tell of member " + name);
        }
    }
    for (const auto& [name, member] : evidence.members) {
        const auto found = members.find(name);
        if (found == members.end()) {
            throw BadEvidence("a member that manifest.json tells of is missing: " + name);
        }
        const EvidenceMember actual = told(found->second);
        if (actual.sha256 != member.sha256 || actual.octets != member.octets) {
            throw BadEvidence("a member has not the digest and size of manifest.json: " + name);
        }
        if (!is_named_after_content(name, found->second)) {
            throw BadEvidence("a member is not named after its content: " + name);
        }
    }
    std::set<std::string> expected = named_objects(evidence);
    expected.emplace(verdicts_name);
    expected.emplace(records_name);
    for (const std::string& name : expected) {
        if (!members.contains(name)) {
            throw BadEvidence("a member is missing: " + name);
        }
    }
    for (const auto& [name, member] : evidence.members) {
        if (!expected.contains(name)) {
            throw BadEvidence("a member belongs to nothing: " + name);
        }
    }
    return evidence;
}

} // namespace norvane
