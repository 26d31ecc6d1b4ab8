#include <QJsonArray>
#include <QJsonDocument>
#include <QSslConfiguration>

#include <gmock/gmock.h>

#include "SharedFiles/analytics/HttpsConnection.h"
#include "SharedFiles/analytics/QVQC.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/analytics/AnalyticsFixture.h"
#include "tests/SharedFiles/analytics/HttpsServer.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

const ServerCertificate& ownCertificate() {
  static const ServerCertificate certificate = ServerCertificate::make();
  return certificate;
}

/// The controller with its own network, whose only authority is the server's certificate.
class AnalyticsUpload : public Analytics {
 protected:
  AnalyticsUpload() {
    makeConnection_ = [this](UrlRequest request, UrlConnectionDelegate& delegate) {
      return HttpsConnection::start(std::move(request), delegate, settings_);
    };
  }
  ~AnalyticsUpload() override { controller_.reset(); }

  /// Launches with consent and two events, posts them, and lets the connection come to its end.
  void upload(const QUrl& endpoint) {
    endpoint_ = endpoint;
    launchWith(4, true).logQCEvent(event("launch", 1'700'000'000));
    controller_->logQCEvent(QVariantMap{{"event", "specs"}, {"date", qint64{1'700'000'001}}, {"data", "12.4.0"}});
    controller_->opQueue().addOperation([this] { controller_->uploadData(); });
    finish();
    runUntil([this] { return controller_->connection() == nullptr; });
  }
  void expectGone() {
    EXPECT_THAT(controller_->cache(), IsEmpty());
    EXPECT_FALSE(QFile::exists(cacheFile()));
    EXPECT_EQ(defaults_->objectForKey("lastSubmission").toDateTime().toSecsSinceEpoch(), startOfTest / 1000);
  }

  HttpsConnection::Settings settings_{.timeOut = std::chrono::seconds(20),
                                      .authorities = {ownCertificate().certificate}};
  check::test::CapturedLog log_;
  const std::string sending_ = "Sending QC log to Quorvane...";
};

TEST_F(AnalyticsUpload, PostsTheFormToTheByte) {
  HttpsServer server(ownCertificate());
  upload(server.address());
  ASSERT_EQ(server.requests().size(), 1U);
  const QByteArray request = server.requests().front();
  const qsizetype end = request.indexOf("\r\n\r\n");
  const QByteArray head = request.left(end + 2), body = request.mid(end + 4);
  EXPECT_THAT(head.toStdString(), StartsWith("POST /appdata/qc/qc.php HTTP/1.1\r\n"));
  const QByteArray field = "\r\nContent-Type: multipart/form-data; boundary=";
  const qsizetype at = head.indexOf(field);
  ASSERT_GE(at, 0) << head.toStdString();
  const qsizetype from = at + field.size();
  const QByteArray boundary = head.mid(from, head.indexOf("\r\n", from) - from);
  EXPECT_THAT(boundary.toStdString(), MatchesRegex("[A-Za-z0-9-]+"));
  const auto part = [&boundary](const QByteArray& name, const QByteArray& value) {
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
  };
  EXPECT_EQ(body, part("app", "com.quorvane.Test") +
                      part("events", R"([{"date":1700000000,"event":"launch"},)"
                                     R"({"data":"12.4.0","date":1700000001,"event":"specs"}])") +
                      part("uid", "abcdefghijkl") + part("version", "3.1"));
  EXPECT_THAT(log_.texts(), ElementsAre(sending_));
  EXPECT_EQ(stored().value("uid"), "abcdefghijkl");
  EXPECT_EQ(stored().value("uidAssigned").toDateTime().toSecsSinceEpoch(), startOfTest / 1000);
  expectGone();
}

TEST_F(AnalyticsUpload, TakesAnyAnswerForTheEnd) {
  HttpsServer server(ownCertificate());
  for (const char* status :
       {"204 No Content", "403 Forbidden", "404 Not Found", "500 Internal Server Error", "503 Service Unavailable"}) {
    server.setAnswer(HttpsServer::answerOf(status));
    upload(server.address());
    expectGone();
  }
  EXPECT_EQ(server.requests().size(), 5U);
  EXPECT_THAT(log_.texts(), testing::Each(sending_));
}

TEST_F(AnalyticsUpload, FollowsNoRedirect) {
  HttpsServer server(ownCertificate()), other(ownCertificate());
  for (const QByteArray& status :
       {QByteArray("301 Moved"), QByteArray("302 Found"), QByteArray("307 Temporary"), QByteArray("308 Permanent")}) {
    server.setAnswer(HttpsServer::answerOf(status, "Location: " + other.address().toEncoded() + "\r\n"));
    upload(server.address());
    EXPECT_THAT(log_.texts().back(), StartsWith("Connection failed - "));
  }
  EXPECT_EQ(server.requests().size(), 4U);
  EXPECT_EQ(other.connections(), 0);
  expectGone();
}

TEST_F(AnalyticsUpload, SendsNothingToAServerThatItCannotTrust) {
  HttpsServer stranger(ServerCertificate::make()), misnamed(ServerCertificate::make("elsewhere.example"));
  upload(stranger.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  expectGone();
  settings_.authorities = {};
  upload(stranger.address());
  EXPECT_THAT(log_.texts().back(), StartsWith("Connection failed - ")) << "nor with the system's authorities";
  settings_.authorities = QSslConfiguration::defaultConfiguration().caCertificates();
  upload(misnamed.address());
  EXPECT_THAT(log_.texts().back(), StartsWith("Connection failed - "));
  EXPECT_EQ(stranger.connections(), 2);
  EXPECT_THAT(stranger.requests(), IsEmpty());
  EXPECT_THAT(misnamed.requests(), IsEmpty());
}

TEST_F(AnalyticsUpload, SendsNothingToATrustedServerOfAnotherName) {
  const ServerCertificate misnamed = ServerCertificate::make("elsewhere.example");
  settings_.authorities = {misnamed.certificate};
  HttpsServer server(misnamed);
  upload(server.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(AnalyticsUpload, MakesNoConnectionButOverHttps) {
  HttpsServer server(ownCertificate(), HttpsServer::Speech::Plain);
  QUrl plain = server.address();
  plain.setScheme("http");
  for (const QUrl& endpoint : {plain, QUrl("ftp://localhost/"), QUrl("https:///appdata/qc/qc.php"), QUrl()}) {
    upload(endpoint);
    EXPECT_EQ(log_.texts().back(), "Failed to establish a connection. Please try again later.");
    EXPECT_EQ(log_.texts().end()[-2], sending_);
    expectGone();
  }
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(AnalyticsUpload, SendsNoFormInTheClear) {
  HttpsServer server(ownCertificate(), HttpsServer::Speech::Plain);
  upload(server.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  for (const QByteArray& request : server.requests()) EXPECT_FALSE(request.contains("form-data"));
  expectGone();
}

TEST_F(AnalyticsUpload, TellsOfARefusedConnection) {
  QUrl nobody;
  {
    const HttpsServer server(ownCertificate());
    nobody = server.address();
  }
  upload(nobody);
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  expectGone();
}

TEST_F(AnalyticsUpload, TellsOfAServerThatHangsUp) {
  HttpsServer server(ownCertificate());
  server.setManner(HttpsServer::Manner::HangsUp);
  upload(server.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  EXPECT_EQ(server.requests().size(), 1U) << "nothing is sent again";
  expectGone();
}

TEST_F(AnalyticsUpload, GivesUpASilentServer) {
  settings_.timeOut = std::chrono::milliseconds(1500);
  HttpsServer server(ownCertificate());
  server.setManner(HttpsServer::Manner::KeepsSilent);
  upload(server.address());
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, "Connection failed - The request timed out."));
  expectGone();
}

TEST_F(AnalyticsUpload, GivesUpAServerThatTrickles) {
  settings_.timeOut = std::chrono::milliseconds(1500);
  HttpsServer server(ownCertificate());
  server.setManner(HttpsServer::Manner::Trickles);
  upload(server.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, "Connection failed - The request timed out."));
  expectGone();
}

TEST_F(AnalyticsUpload, ThrowsAHugeAnswerAway) {
  HttpsServer server(ownCertificate());
  constexpr qsizetype size = qsizetype{64} << 20;
  server.setAnswer("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n" +
                   QByteArray(size, 'x'));
  upload(server.address());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_));
  expectGone();
}

TEST_F(AnalyticsUpload, TellsOfAnAnswerThatIsNone) {
  HttpsServer server(ownCertificate());
  for (const QByteArray& answer :
       {QByteArray("SSH-2.0-server\r\n"), QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nfew"),
        "HTTP/1.1 200 OK\r\n" + QByteArray("Field: ").repeated(1 << 20)}) {
    server.setAnswer(answer);
    upload(server.address());
    EXPECT_THAT(log_.texts().back(), StartsWith("Connection failed - ")) << answer.left(40).toStdString();
    expectGone();
  }
}

TEST_F(AnalyticsUpload, TakesTheProxyOfTheEnvironmentForATunnel) {
  HttpsServer server(ownCertificate());
  const TunnelProxy proxy(server.serverPort());
  environment_.set("https_proxy", proxy.address());
  for (const char* variable : {"no_proxy", "NO_PROXY"}) environment_.clear(variable);
  // A name that the proxy alone may look up. The certificate is not for it, and nothing of the form goes out.
  upload(QUrl("https://analytics.quorvane.example/appdata/qc/qc.php"));
  EXPECT_THAT(proxy.asked(), testing::Contains("CONNECT analytics.quorvane.example:443 HTTP/1.1"));
  EXPECT_FALSE(proxy.carried().isEmpty());
  EXPECT_FALSE(proxy.carried().contains("form-data"));
  EXPECT_THAT(server.requests(), IsEmpty());
  EXPECT_THAT(log_.texts(), ElementsAre(sending_, StartsWith("Connection failed - ")));
  expectGone();

  const ServerCertificate named = ServerCertificate::make("analytics.quorvane.example");
  settings_.authorities = {named.certificate};
  HttpsServer trusted(named);
  const TunnelProxy other(trusted.serverPort());
  environment_.set("https_proxy", other.address());
  upload(QUrl("https://analytics.quorvane.example/appdata/qc/qc.php"));
  EXPECT_EQ(trusted.requests().size(), 1U);
  EXPECT_FALSE(other.carried().contains("form-data"));
}

TEST_F(AnalyticsUpload, EndsSilentlyWithItsController) {
  HttpsServer server(ownCertificate());
  server.setManner(HttpsServer::Manner::KeepsSilent);
  endpoint_ = server.address();
  launchWith(4, true).setupInitialLogging();
  finish();
  runUntil([&] { return !server.requests().empty(); });
  controller_.reset();
  QTest::qWait(100);
  EXPECT_THAT(log_.texts(), ElementsAre(sending_));
}

TEST_F(AnalyticsUpload, RenewsTheIdentifierAfterNinetyDays) {
  const QDateTime now = QDateTime::fromMSecsSinceEpoch(startOfTest, Qt::UTC);
  const struct {
    QVariantMap stored;
    bool kept;
  } rows[] = {
      {{{"uid", "old"}, {"uidAssigned", now.addDays(-89)}}, true},
      {{{"uid", "old"}, {"uidAssigned", now.addDays(-91)}}, false},
      {{{"uid", "old"}, {"uidAssigned", now.addSecs(-7'775'999)}}, true},
      {{{"uid", "old"}, {"uidAssigned", now.addSecs(-7'776'001)}}, false},
      {{{"uid", "old"}, {"uidAssigned", now.addDays(1)}}, true},
      {{{"uid", "old"}}, true},
      {{{"uidAssigned", now.addDays(-1)}}, false},
      {{}, false},
  };
  endpoint_ = QUrl("http://refused.example");
  for (const auto& row : rows) {
    QFile::remove(AnalyticsPreferences(paths_).path());
    AnalyticsPreferences(paths_).setObjects(row.stored);
    random_ = 0;
    upload(endpoint_);
    EXPECT_EQ(stored().value("uid"), row.kept ? "old" : "abcdefghijkl");
    if (!row.kept) {
      EXPECT_EQ(stored().value("uidAssigned").toDateTime().toSecsSinceEpoch(), startOfTest / 1000);
    }
    EXPECT_EQ(stored().value("logQC"), QVariant(true));
  }
}

TEST_F(AnalyticsUpload, IsDueADayAfterTheLastOrFromTheFourthLaunchOn) {
  now_ = startOfTest - 500;
  const QDateTime now = QDateTime::fromMSecsSinceEpoch(now_, Qt::UTC);
  const struct {
    int launches;
    QVariant lastSubmission;
    bool due;
  } rows[] = {{3, {}, false},
              {4, {}, true},
              {1, now.addSecs(-86'399), false},
              {9, now.addSecs(-86'400), false},

              {1, now.addSecs(-86'401), true},
              {9, now.addSecs(86'401), false},
              {4, "yesterday", true}};
  for (const auto& row : rows) {
    defaults_->setObject(row.lastSubmission, "lastSubmission");
    launchWith(row.launches, true).setupInitialLogging();
    finish();
    EXPECT_EQ(controller_->cache().isEmpty(), row.due) << row.lastSubmission.toString().toStdString();
    controller_.reset();
    QFile::remove(cacheFile());
  }
}

TEST_F(AnalyticsUpload, SendsNoEmptyCacheAndForgetsNoSubmission) {
  launchWith(4, true).uploadData();
  EXPECT_THAT(log_.texts(), IsEmpty());
  EXPECT_FALSE(defaults_->objectForKey("lastSubmission").isValid());
  EXPECT_FALSE(stored().contains("uid"));
}

TEST_F(AnalyticsUpload, NamesWhatItDoesNotKnow) {
  bundle_ = BundleInfo();
  makeConnection_ = [this](UrlRequest request, UrlConnectionDelegate&) {
    posted_.push_back(std::move(request));
    return std::shared_ptr<UrlConnection>();
  };
  launchWith(4, true).logQCEvent(event("one"));
  finish();
  controller_->uploadData();
  ASSERT_EQ(posted().size(), 1U);
  EXPECT_EQ(posted().front().body.count("\r\n\r\nUnknown\r\n"), 2);
}

TEST_F(AnalyticsUpload, TheProgramPostsToTheMakersHostOverHttps) {
  const AnalyticsServices real = QVQC::services();
  EXPECT_EQ(real.endpoint.scheme(), "https");
  EXPECT_EQ(real.endpoint.path(), "/appdata/qc/qc.php");
  EXPECT_FALSE(real.endpoint.host().isEmpty());
  EXPECT_TRUE(real.moreInfo.startsWith("https://"));
  EXPECT_TRUE(real.moreInfo.endsWith("/support/posts/app_analytics_and_usage_data"));
}

}  // namespace
