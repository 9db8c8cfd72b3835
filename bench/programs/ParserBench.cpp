// SPDX-License-Identifier: GPL-3.0-or-later
// Each parser on answers of ordinary and of growing size, per byte; the XML tree beside two libraries that
// build or walk one.
#include "metadata/LiveSocket.h"
#include "metadata/OnAirItem.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerXMLParser.h"
#include "speakers/RoomCache.h"
#include "speakers/SoapRequest.h"

#include <benchmark/benchmark.h>
#include <expat.h>
#include <pugixml.hpp>

namespace {

using namespace zofra;

QString description(int number) {
    return QStringLiteral(
               "<?xml version=\"1.0\"?><root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device>"
               "<deviceType>urn:schemas-upnp-org:device:ZonePlayer:1</deviceType><friendlyName>Room "
               "%1</friendlyName>"
               "<manufacturer>Sonos, Inc.</manufacturer><modelName>One</modelName><UDN>uuid:P%1</UDN>"
               "<roomName>Room %1</roomName><serviceList>%2</serviceList></device></root>")
        .arg(number)
        .arg(QStringLiteral("<service><serviceType>urn:schemas-upnp-org:service:AVTransport:1</serviceType>"
                            "<controlURL>/MediaRenderer/AVTransport/Control</controlURL></service>")
                 .repeated(12));
}

QString topology(int players) {
    QString groups;
    for (int i = 0; i < players; ++i) {
        groups += QStringLiteral(
                      "<ZoneGroup Coordinator=\"P%1\" ID=\"P%1:1\"><ZoneGroupMember UUID=\"P%1\" "
                      "Location=\"http://10.0.0.%2:1400/xml/device_description.xml\" ZoneName=\"Room %1\" "
                      "Icon=\"\" Configuration=\"1\" SoftwareVersion=\"70.3\" BootSeq=\"3\"/></ZoneGroup>")
                      .arg(i)
                      .arg(i + 1);
    }
    const auto report =
        QStringLiteral("<ZoneGroupState><ZoneGroups>%1</ZoneGroups></ZoneGroupState>").arg(groups);
    return QStringLiteral(
               "<s:Envelope "
               "xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><r><ZoneGroupState>%1"
               "</ZoneGroupState></r></s:Body></s:Envelope>")
        .arg(escapedForXml(report));
}

void perByte(benchmark::State& state, qsizetype size) {
    state.SetBytesProcessed(state.iterations() * size);
}

void tree(benchmark::State& state) {
    const auto text = description(1);
    for (auto _ : state)
        benchmark::DoNotOptimize(NetworkPlayerProtocol::xml(text));
    perByte(state, text.toUtf8().size());
}
BENCHMARK(tree);

/// A walk alone, which is the least that a tree can cost.
void treeByExpat(benchmark::State& state) {
    const auto bytes = description(1).toUtf8();
    for (auto _ : state) {
        auto* parser = XML_ParserCreate(nullptr);
        int elements = 0;
        XML_SetUserData(parser, &elements);
        XML_SetElementHandler(
            parser, [](void* count, const XML_Char*, const XML_Char**) { ++*static_cast<int*>(count); },
            [](void*, const XML_Char*) {});
        XML_Parse(parser, bytes.constData(), static_cast<int>(bytes.size()), 1);
        XML_ParserFree(parser);
        benchmark::DoNotOptimize(elements);
    }
    perByte(state, bytes.size());
}
BENCHMARK(treeByExpat);

void treeByPugixml(benchmark::State& state) {
    const auto bytes = description(1).toUtf8();
    for (auto _ : state) {
        pugi::xml_document document;
        benchmark::DoNotOptimize(
            document.load_buffer(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    }
    perByte(state, bytes.size());
}
BENCHMARK(treeByPugixml);

void descriptionToPlayer(benchmark::State& state) {
    const auto text = description(1);
    const QUrl url(QStringLiteral("http://10.0.0.5:1400/xml/device_description.xml"));
    for (auto _ : state)
        benchmark::DoNotOptimize(NetworkPlayerProtocol::speaker(text, url));
    perByte(state, text.toUtf8().size());
}
BENCHMARK(descriptionToPlayer);

void topologyOfPlayers(benchmark::State& state) {
    const auto text = topology(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(NetworkPlayerProtocol::topology(text));
    perByte(state, text.toUtf8().size());
    state.SetComplexityN(state.range(0));
}
BENCHMARK(topologyOfPlayers)->Arg(1)->Arg(8)->Arg(32)->Arg(64)->Complexity();

void roomsOfPlayers(benchmark::State& state) {
    QList<SonosSpeaker> speakers;
    for (int i = 0; i < state.range(0); ++i) {
        const QUrl url(QStringLiteral("http://10.0.0.%1:1400/xml/device_description.xml").arg(i + 1));
        speakers << *NetworkPlayerProtocol::speaker(description(i), url);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(NetworkPlayerProtocol::rooms(speakers));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(roomsOfPlayers)->Arg(1)->Arg(8)->Arg(32)->Arg(64)->Complexity();

void searchAnswer(benchmark::State& state) {
    const auto text = QStringLiteral(
        "HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age = 1800\r\nEXT:\r\n"
        "LOCATION: http://10.0.0.5:1400/xml/device_description.xml\r\nSERVER: Linux UPnP/1.0\r\n"
        "ST: urn:schemas-upnp-org:device:ZonePlayer:1\r\nUSN: uuid:P1\r\n\r\n");
    for (auto _ : state)
        benchmark::DoNotOptimize(NetworkPlayerProtocol::ssdpLocation(text));
    perByte(state, text.size());
}
BENCHMARK(searchAnswer);

void liveFrame(benchmark::State& state) {
    const auto frame = QStringLiteral(
        R"(a["{\"action\":\"data\",\"data\":\"{\\\"station\\\":\\\"zofra_be\\\",\\\"entity\\\":\\\"plays\\\",\\\"action\\\":\\\"play\\\",\\\"data\\\":{\\\"title\\\":\\\"Title\\\",\\\"artist\\\":{\\\"name\\\":\\\"Artist\\\"}}}\"}"])");
    for (auto _ : state)
        benchmark::DoNotOptimize(liveTrackInFrame(frame, RadioStation::zofra));
    perByte(state, frame.size());
}
BENCHMARK(liveFrame);

} // namespace
