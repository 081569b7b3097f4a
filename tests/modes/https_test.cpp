// The service over https, with a certificate that the machine trusts or not.

#include "modes/mode_fixture.h"
#include "support/files.h"
#include "support/text.h"

#include <cstdlib>
#include <memory>

#include <wincrypt.h>

namespace quorvex::testing {
namespace {

// The certificate of the service's https front.
class FrontCertificate {
  public:
    FrontCertificate() {
        const char* const file = std::getenv("QUORVEX_TLS_CERTIFICATE");
        const std::string pem = file == nullptr ? "" : support::ReadFileBytes(support::FromUtf8(file));
        std::vector<BYTE> bytes(pem.size());
        auto size = static_cast<DWORD>(bytes.size());
        EXPECT_TRUE(CryptStringToBinaryA(pem.data(), static_cast<DWORD>(pem.size()), CRYPT_STRING_BASE64HEADER,
                                         bytes.data(), &size, nullptr, nullptr))
            << "run inside tests/with_service";
        context_ = CertCreateCertificateContext(X509_ASN_ENCODING, bytes.data(), size);
        store_ = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, L"Root");
    }
    FrontCertificate(const FrontCertificate&) = delete;
    FrontCertificate& operator=(const FrontCertificate&) = delete;
    ~FrontCertificate() {
        EXPECT_TRUE(stored_ == nullptr || CertDeleteCertificateFromStore(stored_));
        EXPECT_TRUE(CertControlStore(store_, 0, CERT_STORE_CTRL_COMMIT, nullptr));
        CertCloseStore(store_, 0);
        CertFreeCertificateContext(context_);
    }

    bool Trust() {
        return CertAddCertificateContextToStore(store_, context_, CERT_STORE_ADD_REPLACE_EXISTING, &stored_) &&
               CertControlStore(store_, 0, CERT_STORE_CTRL_COMMIT, nullptr);
    }

  private:
    PCCERT_CONTEXT context_ = nullptr;
    PCCERT_CONTEXT stored_ = nullptr;
    HCERTSTORE store_ = nullptr;
};

class HttpsTest : public ModeTest {
  protected:
    // Before the first connection of this process: the system reads its roots once.
    static void SetUpTestSuite() {
        certificate = std::make_unique<FrontCertificate>();
        ASSERT_TRUE(certificate->Trust());
    }
    static void TearDownTestSuite() { certificate.reset(); }

    bool FindOver(const char* variable) {
        const char* const url = std::getenv(variable);
        Web().put_ServerURL(Text(support::FromUtf8(url == nullptr ? "" : url)));
        Control(L"reset");
        VARIANT_BOOL found = VARIANT_FALSE;
        EXPECT_EQ(Web().GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found), S_OK);
        return found != VARIANT_FALSE;
    }

    static std::unique_ptr<FrontCertificate> certificate;
};

std::unique_ptr<FrontCertificate> HttpsTest::certificate;

TEST_F(HttpsTest, AKnownCertificateGivesTheSameAnswersAsPlainHttp) {
    EXPECT_TRUE(FindOver("QUORVEX_TLS_URL"));
    EXPECT_EQ(LastTarget(), L"/xmlservice/SearchForAddress.aspx?datakey=KEY1&postcode=AB1%200DF&COM=1");
}

TEST_F(HttpsTest, ACertificateThatNobodyVouchesForEndsTheRequestBeforeItIsSent) {
    EXPECT_FALSE(FindOver("QUORVEX_STRANGER_URL"));
    EXPECT_EQ(Control(L"count"), L"0") << "the key has not left the machine";
}

} // namespace
} // namespace quorvex::testing
