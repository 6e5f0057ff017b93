#include "h323/H225.h"

namespace h323::h225 {
using namespace per;

namespace {
const Type Int0_255 = integer(0, 255);
const Type Int0_65535 = integer(0, 65535);
const Type Octets1 = octetString(fixed(1));
const Type Octets2 = octetString(fixed(2));
const Type Octets4 = octetString(fixed(4));
const Type Octets6 = octetString(fixed(6));
const Type Octets8 = octetString(fixed(8));
const Type Octets16 = octetString(fixed(16));
const Type OctetStrings = sequenceOf(OctetString);
const Type Bits = bitString();
const Type Bits0_2048 = bitString(size(0, 2048));
}  // namespace

// H221NonStandard ::= SEQUENCE {
//   t35CountryCode INTEGER(0..255), t35Extension INTEGER(0..255),
//   manufacturerCode INTEGER(0..65535), ... }
const Component H221NonStandard_[] = {
    {"t35CountryCode", Int0_255},
    {"t35Extension", Int0_255},
    {"manufacturerCode", Int0_65535},
};
const Type H221NonStandard = sequence("H221NonStandard", H221NonStandard_, Extensible);

// NonStandardIdentifier ::= CHOICE {
//   object OBJECT IDENTIFIER, h221NonStandard H221NonStandard, ... }
const Component NonStandardIdentifier_[] = {
    {"object", ObjectIdentifier},
    {"h221NonStandard", H221NonStandard},
};
const Type NonStandardIdentifier = choice("NonStandardIdentifier", NonStandardIdentifier_, Extensible);

// NonStandardParameter ::= SEQUENCE {
//   nonStandardIdentifier NonStandardIdentifier, data OCTET STRING }
const Component NonStandardParameter_[] = {
    {"nonStandardIdentifier", NonStandardIdentifier},
    {"data", OctetString},
};
const Type NonStandardParameter = sequence("NonStandardParameter", NonStandardParameter_);

// TransportAddress ::= CHOICE {
//   ipAddress SEQUENCE { ip OCTET STRING(SIZE(4)), port INTEGER(0..65535) },
//   ipSourceRoute SEQUENCE { ip OCTET STRING(SIZE(4)), port INTEGER(0..65535),
//       route SEQUENCE OF OCTET STRING(SIZE(4)),
//       routing CHOICE { strict NULL, loose NULL, ... }, ... },
//   ipxAddress SEQUENCE { node OCTET STRING(SIZE(6)), netnum OCTET STRING(SIZE(4)),
//       port OCTET STRING(SIZE(2)) },
//   ip6Address SEQUENCE { ip OCTET STRING(SIZE(16)), port INTEGER(0..65535), ... },
//   netBios OCTET STRING(SIZE(16)),
//   nsap OCTET STRING(SIZE(1..20)),
//   nonStandardAddress NonStandardParameter, ... }
const Component TransportAddress_ipAddress_[] = {{"ip", Octets4}, {"port", Int0_65535}};
const Type TransportAddress_ipAddress = sequence("ipAddress", TransportAddress_ipAddress_);

const Type TransportAddress_ipSourceRoute_route = sequenceOf(Octets4);
const Component TransportAddress_ipSourceRoute_routing_[] = {{"strict", Null}, {"loose", Null}};
const Type TransportAddress_ipSourceRoute_routing =
    choice("routing", TransportAddress_ipSourceRoute_routing_, Extensible);
const Component TransportAddress_ipSourceRoute_[] = {
    {"ip", Octets4},
    {"port", Int0_65535},
    {"route", TransportAddress_ipSourceRoute_route},
    {"routing", TransportAddress_ipSourceRoute_routing},
};
const Type TransportAddress_ipSourceRoute = sequence("ipSourceRoute", TransportAddress_ipSourceRoute_, Extensible);

const Component TransportAddress_ipxAddress_[] = {{"node", Octets6}, {"netnum", Octets4}, {"port", Octets2}};
const Type TransportAddress_ipxAddress = sequence("ipxAddress", TransportAddress_ipxAddress_);

const Component TransportAddress_ip6Address_[] = {{"ip", Octets16}, {"port", Int0_65535}};
const Type TransportAddress_ip6Address = sequence("ip6Address", TransportAddress_ip6Address_, Extensible);

const Type TransportAddress_nsap = octetString(size(1, 20));
const Component TransportAddress_[] = {
    {"ipAddress", TransportAddress_ipAddress},
    {"ipSourceRoute", TransportAddress_ipSourceRoute},
    {"ipxAddress", TransportAddress_ipxAddress},
    {"ip6Address", TransportAddress_ip6Address},
    {"netBios", Octets16},
    {"nsap", TransportAddress_nsap},
    {"nonStandardAddress", NonStandardParameter},
};
const Type TransportAddress = choice("TransportAddress", TransportAddress_, Extensible);

// ---- H235-SECURITY-MESSAGES: the part the call-signalling messages carry ----

// TimeStamp ::= INTEGER(1..4294967295)
const Type TimeStamp = integer(1, 4294967295);
// Password ::= BMPString(SIZE(1..128)); Identifier ::= BMPString(SIZE(1..128))
const Type Password = bmpString(size(1, 128));
const Type Identifier = bmpString(size(1, 128));
// ChallengeString ::= OCTET STRING(SIZE(8..128)); RandomVal ::= INTEGER
const Type ChallengeString = octetString(size(8, 128));
const Type RandomVal = unconstrainedInteger();

// H235 NonStandardParameter ::= SEQUENCE { nonStandardIdentifier OBJECT IDENTIFIER, data OCTET STRING }
const Component H235NonStandardParameter_[] = {{"nonStandardIdentifier", ObjectIdentifier}, {"data", OctetString}};
const Type H235NonStandardParameter = sequence("NonStandardParameter", H235NonStandardParameter_);

// DHset ::= SEQUENCE { halfkey, modSize, generator BIT STRING(SIZE(0..2048)), ... }
const Component DHset_[] = {{"halfkey", Bits0_2048}, {"modSize", Bits0_2048}, {"generator", Bits0_2048}};
const Type DHset = sequence("DHset", DHset_, Extensible);

// TypedCertificate ::= SEQUENCE { type OBJECT IDENTIFIER, certificate OCTET STRING, ... }
const Component TypedCertificate_[] = {{"type", ObjectIdentifier}, {"certificate", OctetString}};
const Type TypedCertificate = sequence("TypedCertificate", TypedCertificate_, Extensible);

// ClearToken ::= SEQUENCE { tokenOID OBJECT IDENTIFIER, timeStamp TimeStamp OPTIONAL,
//   password Password OPTIONAL, dhkey DHset OPTIONAL, challenge ChallengeString OPTIONAL,
//   random RandomVal OPTIONAL, certificate TypedCertificate OPTIONAL,
//   generalID Identifier OPTIONAL, nonStandard NonStandardParameter OPTIONAL, ...,
//   eckasdhkey ECKASDH OPTIONAL, sendersID Identifier OPTIONAL, h235Key H235Key OPTIONAL,
//   profileInfo SEQUENCE OF ProfileElement OPTIONAL }
const Component ClearToken_[] = {
    {"tokenOID", ObjectIdentifier},
    {"timeStamp", TimeStamp, Optional},
    {"password", Password, Optional},
    {"dhkey", DHset, Optional},
    {"challenge", ChallengeString, Optional},
    {"random", RandomVal, Optional},
    {"certificate", TypedCertificate, Optional},
    {"generalID", Identifier, Optional},
    {"nonStandard", H235NonStandardParameter, Optional},
    {"eckasdhkey", OpenType, Addition},
    {"sendersID", Identifier, Addition},
    {"h235Key", OpenType, Addition},
    {"profileInfo", OpenType, Addition},
};
const Type ClearToken = sequence("ClearToken", ClearToken_, Extensible);

// Params ::= SEQUENCE { ranInt INTEGER OPTIONAL, iv8 IV8 OPTIONAL, ...,
//   iv16 IV16 OPTIONAL, iv OCTET STRING OPTIONAL, clearSalt OCTET STRING OPTIONAL }
const Component Params_[] = {
    {"ranInt", UnconstrainedInteger, Optional},
    {"iv8", Octets8, Optional},
    {"iv16", Octets16, Addition},
    {"iv", OctetString, Addition},
    {"clearSalt", OctetString, Addition},
};
const Type Params = sequence("Params", Params_, Extensible);

// SIGNED{ToBeSigned} ::= SEQUENCE { toBeSigned ToBeSigned, algorithmOID OBJECT IDENTIFIER,
//   paramS Params, signature BIT STRING }   -- ToBeSigned is always an encoded open type here
const Component SIGNED_[] = {
    {"toBeSigned", OpenType},
    {"algorithmOID", ObjectIdentifier},
    {"paramS", Params},
    {"signature", Bits},
};
const Type SIGNED = sequence("SIGNED", SIGNED_);
// ENCRYPTED{ToBeEncrypted} ::= SEQUENCE { algorithmOID OBJECT IDENTIFIER, paramS Params, encryptedData OCTET STRING }
const Component ENCRYPTED_[] = {{"algorithmOID", ObjectIdentifier}, {"paramS", Params}, {"encryptedData", OctetString}};
const Type ENCRYPTED = sequence("ENCRYPTED", ENCRYPTED_);
// HASHED{ToBeHashed} ::= SEQUENCE { algorithmOID OBJECT IDENTIFIER, paramS Params, hash BIT STRING }
const Component HASHED_[] = {{"algorithmOID", ObjectIdentifier}, {"paramS", Params}, {"hash", Bits}};
const Type HASHED = sequence("HASHED", HASHED_);

// CryptoToken ::= CHOICE {
//   cryptoEncryptedToken SEQUENCE { tokenOID OBJECT IDENTIFIER, token ENCRYPTED{...} },
//   cryptoSignedToken SEQUENCE { tokenOID OBJECT IDENTIFIER, token SIGNED{...} },
//   cryptoHashedToken SEQUENCE { tokenOID OBJECT IDENTIFIER, hashedVals ClearToken, token HASHED{...} },
//   cryptoPwdEncr ENCRYPTED{...}, ... }
const Component CryptoToken_cryptoEncryptedToken_[] = {{"tokenOID", ObjectIdentifier}, {"token", ENCRYPTED}};
const Type CryptoToken_cryptoEncryptedToken = sequence("cryptoEncryptedToken", CryptoToken_cryptoEncryptedToken_);
const Component CryptoToken_cryptoSignedToken_[] = {{"tokenOID", ObjectIdentifier}, {"token", SIGNED}};
const Type CryptoToken_cryptoSignedToken = sequence("cryptoSignedToken", CryptoToken_cryptoSignedToken_);
const Component CryptoToken_cryptoHashedToken_[] = {
    {"tokenOID", ObjectIdentifier},
    {"hashedVals", ClearToken},
    {"token", HASHED},
};
const Type CryptoToken_cryptoHashedToken = sequence("cryptoHashedToken", CryptoToken_cryptoHashedToken_);
const Component CryptoToken_[] = {
    {"cryptoEncryptedToken", CryptoToken_cryptoEncryptedToken},
    {"cryptoSignedToken", CryptoToken_cryptoSignedToken},
    {"cryptoHashedToken", CryptoToken_cryptoHashedToken},
    {"cryptoPwdEncr", ENCRYPTED},
};
const Type CryptoToken = choice("CryptoToken", CryptoToken_, Extensible);

// ---- H323-MESSAGES ----

// GloballyUniqueID ::= OCTET STRING(SIZE(16)); ConferenceIdentifier ::= GloballyUniqueID
const Type& GloballyUniqueID = Octets16;
// ProtocolIdentifier ::= OBJECT IDENTIFIER
const Type& ProtocolIdentifier = ObjectIdentifier;
// CallReferenceValue ::= INTEGER(0..65535)
const Type& CallReferenceValue = Int0_65535;
// GatekeeperIdentifier ::= BMPString(SIZE(1..128)); EndpointIdentifier likewise
const Type GatekeeperIdentifier = bmpString(size(1, 128));
const Type EndpointIdentifier = bmpString(size(1, 128));

// CallIdentifier ::= SEQUENCE { guid GloballyUniqueID, ... }
const Component CallIdentifier_[] = {{"guid", GloballyUniqueID}};
const Type CallIdentifier = sequence("CallIdentifier", CallIdentifier_, Extensible);

// NumberDigits ::= IA5String(SIZE(1..128))(FROM("0123456789#*,"))
const Type NumberDigits = ia5String(size(1, 128), "#*,0123456789");
// TBCD-STRING ::= IA5String(FROM("0123456789#*abc"))
constexpr char kTbcd[] = "#*0123456789abc";
const Type Tbcd3_16 = ia5String(size(3, 16), kTbcd);
const Type Tbcd16 = ia5String(fixed(16), kTbcd);
const Type Tbcd1_4 = ia5String(size(1, 4), kTbcd);
const Type Tbcd15_16 = ia5String(size(15, 16), kTbcd);

// PublicTypeOfNumber ::= CHOICE { unknown, internationalNumber, nationalNumber,
//   networkSpecificNumber, subscriberNumber, abbreviatedNumber NULL, ... }
const Component PublicTypeOfNumber_[] = {
    {"unknown", Null},          {"internationalNumber", Null},
    {"nationalNumber", Null},   {"networkSpecificNumber", Null},
    {"subscriberNumber", Null}, {"abbreviatedNumber", Null},
};
const Type PublicTypeOfNumber = choice("PublicTypeOfNumber", PublicTypeOfNumber_, Extensible);

// PrivateTypeOfNumber ::= CHOICE { unknown, level2RegionalNumber, level1RegionalNumber,
//   pISNSpecificNumber, localNumber, abbreviatedNumber NULL, ... }
const Component PrivateTypeOfNumber_[] = {
    {"unknown", Null},     {"level2RegionalNumber", Null}, {"level1RegionalNumber", Null}, {"pISNSpecificNumber", Null},
    {"localNumber", Null}, {"abbreviatedNumber", Null},
};
const Type PrivateTypeOfNumber = choice("PrivateTypeOfNumber", PrivateTypeOfNumber_, Extensible);

// PublicPartyNumber ::= SEQUENCE { publicTypeOfNumber PublicTypeOfNumber, publicNumberDigits NumberDigits }
const Component PublicPartyNumber_[] = {{"publicTypeOfNumber", PublicTypeOfNumber},
                                        {"publicNumberDigits", NumberDigits}};
const Type PublicPartyNumber = sequence("PublicPartyNumber", PublicPartyNumber_);

// PrivatePartyNumber ::= SEQUENCE { privateTypeOfNumber PrivateTypeOfNumber, privateNumberDigits NumberDigits }
const Component PrivatePartyNumber_[] = {{"privateTypeOfNumber", PrivateTypeOfNumber},
                                         {"privateNumberDigits", NumberDigits}};
const Type PrivatePartyNumber = sequence("PrivatePartyNumber", PrivatePartyNumber_);

// PartyNumber ::= CHOICE { e164Number PublicPartyNumber, dataPartyNumber NumberDigits,
//   telexPartyNumber NumberDigits, privateNumber PrivatePartyNumber,
//   nationalStandardPartyNumber NumberDigits, ... }
const Component PartyNumber_[] = {
    {"e164Number", PublicPartyNumber},
    {"dataPartyNumber", NumberDigits},
    {"telexPartyNumber", NumberDigits},
    {"privateNumber", PrivatePartyNumber},
    {"nationalStandardPartyNumber", NumberDigits},
};
const Type PartyNumber = choice("PartyNumber", PartyNumber_, Extensible);

// ANSI-41-UIM ::= SEQUENCE { imsi, min, mdn, msisdn TBCD-STRING(SIZE(3..16)) OPTIONAL,
//   esn TBCD-STRING(SIZE(16)) OPTIONAL, mscid TBCD-STRING(SIZE(3..16)) OPTIONAL,
//   system-id CHOICE { sid TBCD-STRING(SIZE(1..4)), mid TBCD-STRING(SIZE(1..4)), ... },
//   systemMyTypeCode, systemAccessType, qualificationInformationCode OCTET STRING(SIZE(1)) OPTIONAL,
//   sesn TBCD-STRING(SIZE(16)) OPTIONAL, soc TBCD-STRING(SIZE(3..16)) OPTIONAL, ... }
const Component ANSI_41_UIM_system_id_[] = {{"sid", Tbcd1_4}, {"mid", Tbcd1_4}};
const Type ANSI_41_UIM_system_id = choice("system_id", ANSI_41_UIM_system_id_, Extensible);
const Component ANSI_41_UIM_[] = {
    {"imsi", Tbcd3_16, Optional},
    {"min", Tbcd3_16, Optional},
    {"mdn", Tbcd3_16, Optional},
    {"msisdn", Tbcd3_16, Optional},
    {"esn", Tbcd16, Optional},
    {"mscid", Tbcd3_16, Optional},
    {"system_id", ANSI_41_UIM_system_id},
    {"systemMyTypeCode", Octets1, Optional},
    {"systemAccessType", Octets1, Optional},
    {"qualificationInformationCode", Octets1, Optional},
    {"sesn", Tbcd16, Optional},
    {"soc", Tbcd3_16, Optional},
};
const Type ANSI_41_UIM = sequence("ANSI-41-UIM", ANSI_41_UIM_, Extensible);

// GSM-UIM ::= SEQUENCE { imsi TBCD-STRING(SIZE(3..16)) OPTIONAL, tmsi OCTET STRING(SIZE(1..4)) OPTIONAL,
//   msisdn TBCD-STRING(SIZE(3..16)) OPTIONAL, imei TBCD-STRING(SIZE(15..16)) OPTIONAL,
//   hplmn, vplmn TBCD-STRING(SIZE(1..4)) OPTIONAL, ... }
const Type GSM_UIM_tmsi = octetString(size(1, 4));
const Component GSM_UIM_[] = {
    {"imsi", Tbcd3_16, Optional},  {"tmsi", GSM_UIM_tmsi, Optional}, {"msisdn", Tbcd3_16, Optional},
    {"imei", Tbcd15_16, Optional}, {"hplmn", Tbcd1_4, Optional},     {"vplmn", Tbcd1_4, Optional},
};
const Type GSM_UIM = sequence("GSM-UIM", GSM_UIM_, Extensible);

// MobileUIM ::= CHOICE { ansi-41-uim ANSI-41-UIM, gsm-uim GSM-UIM, ... }
const Component MobileUIM_[] = {{"ansi_41_uim", ANSI_41_UIM}, {"gsm_uim", GSM_UIM}};
const Type MobileUIM = choice("MobileUIM", MobileUIM_, Extensible);

// AliasAddress ::= CHOICE {
//   dialedDigits IA5String(SIZE(1..128))(FROM("0123456789#*,")),
//   h323-ID BMPString(SIZE(1..256)), ...,
//   url-ID IA5String(SIZE(1..512)), transportID TransportAddress,
//   email-ID IA5String(SIZE(1..512)), partyNumber PartyNumber, mobileUIM MobileUIM,
//   isupNumber IsupNumber }
const Type AliasAddress_h323_ID = bmpString(size(1, 256));
const Type Ia5String1_512 = ia5String(size(1, 512));
const Component AliasAddress_[] = {
    {"dialedDigits", NumberDigits},         {"h323_ID", AliasAddress_h323_ID},
    {"url_ID", Ia5String1_512, Addition},   {"transportID", TransportAddress, Addition},
    {"email_ID", Ia5String1_512, Addition}, {"partyNumber", PartyNumber, Addition},
    {"mobileUIM", MobileUIM, Addition},     {"isupNumber", OpenType, Addition},
};
const Type AliasAddress = choice("AliasAddress", AliasAddress_, Extensible);
const Type AliasAddresses = sequenceOf(AliasAddress);

// CryptoH323Token ::= CHOICE {
//   cryptoEPPwdHash SEQUENCE { alias AliasAddress, timeStamp TimeStamp, token HASHED{...} },
//   cryptoGKPwdHash SEQUENCE { gatekeeperId GatekeeperIdentifier, timeStamp TimeStamp, token HASHED{...} },
//   cryptoEPPwdEncr ENCRYPTED{...}, cryptoGKPwdEncr ENCRYPTED{...},
//   cryptoEPCert SIGNED{...}, cryptoGKCert SIGNED{...}, cryptoFastStart SIGNED{...},
//   nestedcryptoToken CryptoToken, ... }
const Component CryptoH323Token_cryptoEPPwdHash_[] = {
    {"alias", AliasAddress}, {"timeStamp", TimeStamp}, {"token", HASHED}};
const Type CryptoH323Token_cryptoEPPwdHash = sequence("cryptoEPPwdHash", CryptoH323Token_cryptoEPPwdHash_);
const Component CryptoH323Token_cryptoGKPwdHash_[] = {
    {"gatekeeperId", GatekeeperIdentifier},
    {"timeStamp", TimeStamp},
    {"token", HASHED},
};
const Type CryptoH323Token_cryptoGKPwdHash = sequence("cryptoGKPwdHash", CryptoH323Token_cryptoGKPwdHash_);
const Component CryptoH323Token_[] = {
    {"cryptoEPPwdHash", CryptoH323Token_cryptoEPPwdHash},
    {"cryptoGKPwdHash", CryptoH323Token_cryptoGKPwdHash},
    {"cryptoEPPwdEncr", ENCRYPTED},
    {"cryptoGKPwdEncr", ENCRYPTED},
    {"cryptoEPCert", SIGNED},
    {"cryptoGKCert", SIGNED},
    {"cryptoFastStart", SIGNED},
    {"nestedcryptoToken", CryptoToken},
};
const Type CryptoH323Token = choice("CryptoH323Token", CryptoH323Token_, Extensible);
const Type ClearTokens = sequenceOf(ClearToken);
const Type CryptoH323Tokens = sequenceOf(CryptoH323Token);

// VendorIdentifier ::= SEQUENCE { vendor H221NonStandard,
//   productId OCTET STRING(SIZE(1..256)) OPTIONAL, versionId OCTET STRING(SIZE(1..256)) OPTIONAL, ...,
//   enterpriseNumber OBJECT IDENTIFIER OPTIONAL }
const Type Octets1_256 = octetString(size(1, 256));
const Component VendorIdentifier_[] = {
    {"vendor", H221NonStandard},
    {"productId", Octets1_256, Optional},
    {"versionId", Octets1_256, Optional},
    {"enterpriseNumber", ObjectIdentifier, Addition},
};
const Type VendorIdentifier = sequence("VendorIdentifier", VendorIdentifier_, Extensible);

// GatekeeperInfo, TerminalInfo ::= SEQUENCE { nonStandardData NonStandardParameter OPTIONAL, ... }
const Component NonStandardOnly_[] = {{"nonStandardData", NonStandardParameter, Optional}};
const Type GatekeeperInfo = sequence("GatekeeperInfo", NonStandardOnly_, Extensible);
const Type TerminalInfo = sequence("TerminalInfo", NonStandardOnly_, Extensible);

// H310Caps, H320Caps, H321Caps, H322Caps, H323Caps, H324Caps, VoiceCaps, T120OnlyCaps ::=
//   SEQUENCE { nonStandardData NonStandardParameter OPTIONAL, ...,
//     dataRatesSupported SEQUENCE OF DataRate OPTIONAL, supportedPrefixes SEQUENCE OF SupportedPrefix }
const Component Caps_[] = {
    {"nonStandardData", NonStandardParameter, Optional},
    {"dataRatesSupported", OpenType, Addition},
    {"supportedPrefixes", OpenType, Addition},
};
const Type H310Caps = sequence("H310Caps", Caps_, Extensible);
const Type H320Caps = sequence("H320Caps", Caps_, Extensible);
const Type H321Caps = sequence("H321Caps", Caps_, Extensible);
const Type H322Caps = sequence("H322Caps", Caps_, Extensible);
const Type H323Caps = sequence("H323Caps", Caps_, Extensible);
const Type H324Caps = sequence("H324Caps", Caps_, Extensible);
const Type VoiceCaps = sequence("VoiceCaps", Caps_, Extensible);
const Type T120OnlyCaps = sequence("T120OnlyCaps", Caps_, Extensible);

// SupportedProtocols ::= CHOICE { nonStandardData NonStandardParameter, h310 H310Caps,
//   h320 H320Caps, h321 H321Caps, h322 H322Caps, h323 H323Caps, h324 H324Caps,
//   voice VoiceCaps, t120-only T120OnlyCaps, ...,
//   nonStandardProtocol NonStandardProtocol, t38FaxAnnexbOnly T38FaxAnnexbOnlyCaps, sip SIPCaps }
const Component SupportedProtocols_[] = {
    {"nonStandardData", NonStandardParameter},
    {"h310", H310Caps},
    {"h320", H320Caps},
    {"h321", H321Caps},
    {"h322", H322Caps},
    {"h323", H323Caps},
    {"h324", H324Caps},
    {"voice", VoiceCaps},
    {"t120_only", T120OnlyCaps},
    {"nonStandardProtocol", OpenType, Addition},
    {"t38FaxAnnexbOnly", OpenType, Addition},
    {"sip", OpenType, Addition},
};
const Type SupportedProtocols = choice("SupportedProtocols", SupportedProtocols_, Extensible);
const Type SupportedProtocolsList = sequenceOf(SupportedProtocols);

// GatewayInfo ::= SEQUENCE { protocol SEQUENCE OF SupportedProtocols OPTIONAL,
//   nonStandardData NonStandardParameter OPTIONAL, ... }
const Component GatewayInfo_[] = {
    {"protocol", SupportedProtocolsList, Optional},
    {"nonStandardData", NonStandardParameter, Optional},
};
const Type GatewayInfo = sequence("GatewayInfo", GatewayInfo_, Extensible);

// McuInfo ::= SEQUENCE { nonStandardData NonStandardParameter OPTIONAL, ...,
//   protocol SEQUENCE OF SupportedProtocols OPTIONAL }
const Component McuInfo_[] = {
    {"nonStandardData", NonStandardParameter, Optional},
    {"protocol", SupportedProtocolsList, Addition},
};
const Type McuInfo = sequence("McuInfo", McuInfo_, Extensible);

// EndpointType ::= SEQUENCE { nonStandardData NonStandardParameter OPTIONAL,
//   vendor VendorIdentifier OPTIONAL, gatekeeper GatekeeperInfo OPTIONAL,
//   gateway GatewayInfo OPTIONAL, mcu McuInfo OPTIONAL, terminal TerminalInfo OPTIONAL,
//   mc BOOLEAN, undefinedNode BOOLEAN, ...,
//   set BIT STRING(SIZE(32)) OPTIONAL, supportedTunnelledProtocols SEQUENCE OF TunnelledProtocol OPTIONAL }
const Type EndpointType_set = bitString(fixed(32));
const Component EndpointType_[] = {
    {"nonStandardData", NonStandardParameter, Optional},
    {"vendor", VendorIdentifier, Optional},
    {"gatekeeper", GatekeeperInfo, Optional},
    {"gateway", GatewayInfo, Optional},
    {"mcu", McuInfo, Optional},
    {"terminal", TerminalInfo, Optional},
    {"mc", Boolean},
    {"undefinedNode", Boolean},
    {"set", EndpointType_set, Addition},
    {"supportedTunnelledProtocols", OpenType, Addition},
};
const Type EndpointType = sequence("EndpointType", EndpointType_, Extensible);

// Q954Details ::= SEQUENCE { conferenceCalling BOOLEAN, threePartyService BOOLEAN, ... }
const Component Q954Details_[] = {{"conferenceCalling", Boolean}, {"threePartyService", Boolean}};
const Type Q954Details = sequence("Q954Details", Q954Details_, Extensible);

// QseriesOptions ::= SEQUENCE { q932Full, q951Full, q952Full, q953Full, q955Full,
//   q956Full, q957Full BOOLEAN, q954Info Q954Details, ... }
const Component QseriesOptions_[] = {
    {"q932Full", Boolean}, {"q951Full", Boolean}, {"q952Full", Boolean}, {"q953Full", Boolean},
    {"q955Full", Boolean}, {"q956Full", Boolean}, {"q957Full", Boolean}, {"q954Info", Q954Details},
};
const Type QseriesOptions = sequence("QseriesOptions", QseriesOptions_, Extensible);

// CallType ::= CHOICE { pointToPoint, oneToN, nToOne, nToN NULL, ... }
const Component CallType_[] = {{"pointToPoint", Null}, {"oneToN", Null}, {"nToOne", Null}, {"nToN", Null}};
const Type CallType = choice("CallType", CallType_, Extensible);

// SecurityServiceMode ::= CHOICE { nonStandard NonStandardParameter, none NULL, default NULL, ... }
const Component SecurityServiceMode_[] = {{"nonStandard", NonStandardParameter}, {"none", Null}, {"default", Null}};
const Type SecurityServiceMode = choice("SecurityServiceMode", SecurityServiceMode_, Extensible);

// SecurityCapabilities ::= SEQUENCE { nonStandard NonStandardParameter OPTIONAL,
//   encryption, authenticaton, integrity SecurityServiceMode, ... }
const Component SecurityCapabilities_[] = {
    {"nonStandard", NonStandardParameter, Optional},
    {"encryption", SecurityServiceMode},
    {"authenticaton", SecurityServiceMode},
    {"integrity", SecurityServiceMode},
};
const Type SecurityCapabilities = sequence("SecurityCapabilities", SecurityCapabilities_, Extensible);

// H245Security ::= CHOICE { nonStandard NonStandardParameter, noSecurity NULL,
//   tls SecurityCapabilities, ipsec SecurityCapabilities, ... }
const Component H245Security_[] = {
    {"nonStandard", NonStandardParameter},
    {"noSecurity", Null},
    {"tls", SecurityCapabilities},
    {"ipsec", SecurityCapabilities},
};
const Type H245Security = choice("H245Security", H245Security_, Extensible);

// PresentationIndicator ::= CHOICE { presentationAllowed, presentationRestricted, addressNotAvailable NULL, ... }
const Component PresentationIndicator_[] = {
    {"presentationAllowed", Null},
    {"presentationRestricted", Null},
    {"addressNotAvailable", Null},
};
const Type PresentationIndicator = choice("PresentationIndicator", PresentationIndicator_, Extensible);

// ScreeningIndicator ::= ENUMERATED { userProvidedNotScreened(0), userProvidedVerifiedAndPassed(1),
//   userProvidedVerifiedAndFailed(2), networkProvided(3), ... }
const Component ScreeningIndicator_[] = {
    Component("userProvidedNotScreened"),
    Component("userProvidedVerifiedAndPassed"),
    Component("userProvidedVerifiedAndFailed"),
    Component("networkProvided"),
};
const Type ScreeningIndicator = enumerated("ScreeningIndicator", ScreeningIndicator_, Extensible);

const Type Ia5String1_32 = ia5String(size(1, 32));
const Type Ia5String1_32List = sequenceOf(Ia5String1_32);

// ---- the user-user information elements ----

// Setup-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   h245Address TransportAddress OPTIONAL, sourceAddress SEQUENCE OF AliasAddress OPTIONAL,
//   sourceInfo EndpointType, destinationAddress SEQUENCE OF AliasAddress OPTIONAL,
//   destCallSignalAddress TransportAddress OPTIONAL, destExtraCallInfo SEQUENCE OF AliasAddress OPTIONAL,
//   destExtraCRV SEQUENCE OF CallReferenceValue OPTIONAL, activeMC BOOLEAN,
//   conferenceID ConferenceIdentifier,
//   conferenceGoal CHOICE { create, join, invite NULL, ..., capability-negotiation,
//     callIndependentSupplementaryService NULL },
//   callServices QseriesOptions OPTIONAL, callType CallType, ...,
//   sourceCallSignalAddress TransportAddress OPTIONAL, remoteExtensionAddress AliasAddress OPTIONAL,
//   callIdentifier CallIdentifier, h245SecurityCapability SEQUENCE OF H245Security OPTIONAL,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL,
//   fastStart SEQUENCE OF OCTET STRING OPTIONAL, mediaWaitForConnect BOOLEAN, canOverlapSend BOOLEAN,
//   endpointIdentifier EndpointIdentifier OPTIONAL, multipleCalls BOOLEAN, maintainConnection BOOLEAN,
//   connectionParameters SEQUENCE {...} OPTIONAL, language SEQUENCE OF IA5String(SIZE(1..32)) OPTIONAL,
//   presentationIndicator PresentationIndicator OPTIONAL, screeningIndicator ScreeningIndicator OPTIONAL,
//   serviceControl SEQUENCE OF ServiceControlSession OPTIONAL, symmetricOperationRequired NULL OPTIONAL,
//   capacity CallCapacity OPTIONAL, circuitInfo CircuitInfo OPTIONAL,
//   desiredProtocols SEQUENCE OF SupportedProtocols OPTIONAL,
//   neededFeatures, desiredFeatures, supportedFeatures SEQUENCE OF FeatureDescriptor OPTIONAL,
//   parallelH245Control SEQUENCE OF OCTET STRING OPTIONAL,
//   additionalSourceAddresses SEQUENCE OF ExtendedAliasAddress OPTIONAL,
//   hopCount INTEGER(1..31) OPTIONAL, displayName SEQUENCE OF DisplayName OPTIONAL }
const Component Setup_UUIE_conferenceGoal_[] = {
    {"create", Null},
    {"join", Null},
    {"invite", Null},
    {"capability_negotiation", Null, Addition},
    {"callIndependentSupplementaryService", Null, Addition},
};
const Type Setup_UUIE_conferenceGoal = choice("conferenceGoal", Setup_UUIE_conferenceGoal_, Extensible);
const Type CallReferenceValues = sequenceOf(CallReferenceValue);
const Type H245Securities = sequenceOf(H245Security);
const Type Setup_UUIE_hopCount = integer(1, 31);
const Component Setup_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"h245Address", TransportAddress, Optional},
    {"sourceAddress", AliasAddresses, Optional},
    {"sourceInfo", EndpointType},
    {"destinationAddress", AliasAddresses, Optional},
    {"destCallSignalAddress", TransportAddress, Optional},
    {"destExtraCallInfo", AliasAddresses, Optional},
    {"destExtraCRV", CallReferenceValues, Optional},
    {"activeMC", Boolean},
    {"conferenceID", GloballyUniqueID},
    {"conferenceGoal", Setup_UUIE_conferenceGoal},
    {"callServices", QseriesOptions, Optional},
    {"callType", CallType},
    {"sourceCallSignalAddress", TransportAddress, Addition},
    {"remoteExtensionAddress", AliasAddress, Addition},
    {"callIdentifier", CallIdentifier, Addition},
    {"h245SecurityCapability", H245Securities, Addition},
    {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition},
    {"fastStart", OctetStrings, Addition},
    {"mediaWaitForConnect", Boolean, Addition},
    {"canOverlapSend", Boolean, Addition},
    {"endpointIdentifier", EndpointIdentifier, Addition},
    {"multipleCalls", Boolean, Addition},
    {"maintainConnection", Boolean, Addition},
    {"connectionParameters", OpenType, Addition},
    {"language", Ia5String1_32List, Addition},
    {"presentationIndicator", PresentationIndicator, Addition},
    {"screeningIndicator", ScreeningIndicator, Addition},
    {"serviceControl", OpenType, Addition},
    {"symmetricOperationRequired", Null, Addition},
    {"capacity", OpenType, Addition},
    {"circuitInfo", OpenType, Addition},
    {"desiredProtocols", SupportedProtocolsList, Addition},
    {"neededFeatures", OpenType, Addition},
    {"desiredFeatures", OpenType, Addition},
    {"supportedFeatures", OpenType, Addition},
    {"parallelH245Control", OctetStrings, Addition},
    {"additionalSourceAddresses", OpenType, Addition},
    {"hopCount", Setup_UUIE_hopCount, Addition},
    {"displayName", OpenType, Addition},
};
const Type Setup_UUIE = sequence("Setup-UUIE", Setup_UUIE_, Extensible);

// CallProceeding-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   destinationInfo EndpointType, h245Address TransportAddress OPTIONAL, ...,
//   callIdentifier CallIdentifier, h245SecurityMode H245Security OPTIONAL,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL,
//   fastStart SEQUENCE OF OCTET STRING OPTIONAL, multipleCalls BOOLEAN, maintainConnection BOOLEAN,
//   fastConnectRefused NULL OPTIONAL, featureSet FeatureSet OPTIONAL }
const Component CallProceeding_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},   {"destinationInfo", EndpointType},
    {"h245Address", TransportAddress, Optional},  {"callIdentifier", CallIdentifier, Addition},
    {"h245SecurityMode", H245Security, Addition}, {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition}, {"fastStart", OctetStrings, Addition},
    {"multipleCalls", Boolean, Addition},         {"maintainConnection", Boolean, Addition},
    {"fastConnectRefused", Null, Addition},       {"featureSet", OpenType, Addition},
};
const Type CallProceeding_UUIE = sequence("CallProceeding-UUIE", CallProceeding_UUIE_, Extensible);

// Connect-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   h245Address TransportAddress OPTIONAL, destinationInfo EndpointType,
//   conferenceID ConferenceIdentifier, ..., callIdentifier CallIdentifier,
//   h245SecurityMode H245Security OPTIONAL, tokens SEQUENCE OF ClearToken OPTIONAL,
//   cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL, fastStart SEQUENCE OF OCTET STRING OPTIONAL,
//   multipleCalls BOOLEAN, maintainConnection BOOLEAN,
//   language SEQUENCE OF IA5String(SIZE(1..32)) OPTIONAL, connectedAddress SEQUENCE OF AliasAddress OPTIONAL,
//   presentationIndicator PresentationIndicator OPTIONAL, screeningIndicator ScreeningIndicator OPTIONAL,
//   fastConnectRefused NULL OPTIONAL, serviceControl SEQUENCE OF ServiceControlSession OPTIONAL,
//   capacity CallCapacity OPTIONAL, featureSet FeatureSet OPTIONAL,
//   displayName SEQUENCE OF DisplayName OPTIONAL }
const Component Connect_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"h245Address", TransportAddress, Optional},
    {"destinationInfo", EndpointType},
    {"conferenceID", GloballyUniqueID},
    {"callIdentifier", CallIdentifier, Addition},
    {"h245SecurityMode", H245Security, Addition},
    {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition},
    {"fastStart", OctetStrings, Addition},
    {"multipleCalls", Boolean, Addition},
    {"maintainConnection", Boolean, Addition},
    {"language", Ia5String1_32List, Addition},
    {"connectedAddress", AliasAddresses, Addition},
    {"presentationIndicator", PresentationIndicator, Addition},
    {"screeningIndicator", ScreeningIndicator, Addition},
    {"fastConnectRefused", Null, Addition},
    {"serviceControl", OpenType, Addition},
    {"capacity", OpenType, Addition},
    {"featureSet", OpenType, Addition},
    {"displayName", OpenType, Addition},
};
const Type Connect_UUIE = sequence("Connect-UUIE", Connect_UUIE_, Extensible);

// Alerting-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   destinationInfo EndpointType, h245Address TransportAddress OPTIONAL, ...,
//   callIdentifier CallIdentifier, h245SecurityMode H245Security OPTIONAL,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL,
//   fastStart SEQUENCE OF OCTET STRING OPTIONAL, multipleCalls BOOLEAN, maintainConnection BOOLEAN,
//   alertingAddress SEQUENCE OF AliasAddress OPTIONAL,
//   presentationIndicator PresentationIndicator OPTIONAL, screeningIndicator ScreeningIndicator OPTIONAL,
//   fastConnectRefused NULL OPTIONAL, serviceControl SEQUENCE OF ServiceControlSession OPTIONAL,
//   capacity CallCapacity OPTIONAL, featureSet FeatureSet OPTIONAL,
//   displayName SEQUENCE OF DisplayName OPTIONAL }
const Component Alerting_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"destinationInfo", EndpointType},
    {"h245Address", TransportAddress, Optional},
    {"callIdentifier", CallIdentifier, Addition},
    {"h245SecurityMode", H245Security, Addition},
    {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition},
    {"fastStart", OctetStrings, Addition},
    {"multipleCalls", Boolean, Addition},
    {"maintainConnection", Boolean, Addition},
    {"alertingAddress", AliasAddresses, Addition},
    {"presentationIndicator", PresentationIndicator, Addition},
    {"screeningIndicator", ScreeningIndicator, Addition},
    {"fastConnectRefused", Null, Addition},
    {"serviceControl", OpenType, Addition},
    {"capacity", OpenType, Addition},
    {"featureSet", OpenType, Addition},
    {"displayName", OpenType, Addition},
};
const Type Alerting_UUIE = sequence("Alerting-UUIE", Alerting_UUIE_, Extensible);

// Information-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier, ...,
//   callIdentifier CallIdentifier, tokens SEQUENCE OF ClearToken OPTIONAL,
//   cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL, fastStart SEQUENCE OF OCTET STRING OPTIONAL,
//   fastConnectRefused NULL OPTIONAL, circuitInfo CircuitInfo OPTIONAL }
const Component Information_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier}, {"callIdentifier", CallIdentifier, Addition},
    {"tokens", ClearTokens, Addition},          {"cryptoTokens", CryptoH323Tokens, Addition},
    {"fastStart", OctetStrings, Addition},      {"fastConnectRefused", Null, Addition},
    {"circuitInfo", OpenType, Addition},
};
const Type Information_UUIE = sequence("Information-UUIE", Information_UUIE_, Extensible);

// ReleaseCompleteReason ::= CHOICE { noBandwidth, gatekeeperResources, unreachableDestination,
//   destinationRejection, invalidRevision, noPermission, unreachableGatekeeper, gatewayResources,
//   badFormatAddress, adaptiveBusy, inConf, undefinedReason NULL, ...,
//   facilityCallDeflection, securityDenied, calledPartyNotRegistered, callerNotRegistered,
//   newConnectionNeeded NULL, nonStandardReason NonStandardParameter,
//   replaceWithConferenceInvite ConferenceIdentifier, genericDataReason, neededFeatureNotSupported,
//   tunnelledSignallingRejected, invalidCID NULL, securityError SecurityErrors, hopCountExceeded NULL }
const Component ReleaseCompleteReason_[] = {
    {"noBandwidth", Null},
    {"gatekeeperResources", Null},
    {"unreachableDestination", Null},
    {"destinationRejection", Null},
    {"invalidRevision", Null},
    {"noPermission", Null},
    {"unreachableGatekeeper", Null},
    {"gatewayResources", Null},
    {"badFormatAddress", Null},
    {"adaptiveBusy", Null},
    {"inConf", Null},
    {"undefinedReason", Null},
    {"facilityCallDeflection", Null, Addition},
    {"securityDenied", Null, Addition},
    {"calledPartyNotRegistered", Null, Addition},
    {"callerNotRegistered", Null, Addition},
    {"newConnectionNeeded", Null, Addition},
    {"nonStandardReason", NonStandardParameter, Addition},
    {"replaceWithConferenceInvite", GloballyUniqueID, Addition},
    {"genericDataReason", Null, Addition},
    {"neededFeatureNotSupported", Null, Addition},
    {"tunnelledSignallingRejected", Null, Addition},
    {"invalidCID", Null, Addition},
    {"securityError", OpenType, Addition},
    {"hopCountExceeded", Null, Addition},
};
const Type ReleaseCompleteReason = choice("ReleaseCompleteReason", ReleaseCompleteReason_, Extensible);

// ReleaseComplete-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   reason ReleaseCompleteReason OPTIONAL, ..., callIdentifier CallIdentifier,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL,
//   busyAddress SEQUENCE OF AliasAddress OPTIONAL, presentationIndicator PresentationIndicator OPTIONAL,
//   screeningIndicator ScreeningIndicator OPTIONAL, capacity CallCapacity OPTIONAL,
//   serviceControl SEQUENCE OF ServiceControlSession OPTIONAL, featureSet FeatureSet OPTIONAL,
//   destinationInfo EndpointType OPTIONAL, displayName SEQUENCE OF DisplayName OPTIONAL }
const Component ReleaseComplete_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"reason", ReleaseCompleteReason, Optional},
    {"callIdentifier", CallIdentifier, Addition},
    {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition},
    {"busyAddress", AliasAddresses, Addition},
    {"presentationIndicator", PresentationIndicator, Addition},
    {"screeningIndicator", ScreeningIndicator, Addition},
    {"capacity", OpenType, Addition},
    {"serviceControl", OpenType, Addition},
    {"featureSet", OpenType, Addition},
    {"destinationInfo", EndpointType, Addition},
    {"displayName", OpenType, Addition},
};
const Type ReleaseComplete_UUIE = sequence("ReleaseComplete-UUIE", ReleaseComplete_UUIE_, Extensible);

// FacilityReason ::= CHOICE { routeCallToGatekeeper, callForwarded, routeCallToMC,
//   undefinedReason NULL, ..., conferenceListChoice, startH245, noH245, newTokens,
//   featureSetUpdate, forwardedElements, transportedInformation NULL }
const Component FacilityReason_[] = {
    {"routeCallToGatekeeper", Null},
    {"callForwarded", Null},
    {"routeCallToMC", Null},
    {"undefinedReason", Null},
    {"conferenceListChoice", Null, Addition},
    {"startH245", Null, Addition},
    {"noH245", Null, Addition},
    {"newTokens", Null, Addition},
    {"featureSetUpdate", Null, Addition},
    {"forwardedElements", Null, Addition},
    {"transportedInformation", Null, Addition},
};
const Type FacilityReason = choice("FacilityReason", FacilityReason_, Extensible);

// Facility-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   alternativeAddress TransportAddress OPTIONAL, alternativeAliasAddress SEQUENCE OF AliasAddress OPTIONAL,
//   conferenceID ConferenceIdentifier OPTIONAL, reason FacilityReason, ...,
//   callIdentifier CallIdentifier, destExtraCallInfo SEQUENCE OF AliasAddress OPTIONAL,
//   remoteExtensionAddress AliasAddress OPTIONAL, tokens SEQUENCE OF ClearToken OPTIONAL,
//   cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL, conferences SEQUENCE OF ConferenceList OPTIONAL,
//   h245Address TransportAddress OPTIONAL, fastStart SEQUENCE OF OCTET STRING OPTIONAL,
//   multipleCalls BOOLEAN, maintainConnection BOOLEAN, fastConnectRefused NULL OPTIONAL,
//   serviceControl SEQUENCE OF ServiceControlSession OPTIONAL, circuitInfo CircuitInfo OPTIONAL,
//   featureSet FeatureSet OPTIONAL, destinationInfo EndpointType OPTIONAL,
//   h245SecurityMode H245Security OPTIONAL }
const Component Facility_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"alternativeAddress", TransportAddress, Optional},
    {"alternativeAliasAddress", AliasAddresses, Optional},
    {"conferenceID", GloballyUniqueID, Optional},
    {"reason", FacilityReason},
    {"callIdentifier", CallIdentifier, Addition},
    {"destExtraCallInfo", AliasAddresses, Addition},
    {"remoteExtensionAddress", AliasAddress, Addition},
    {"tokens", ClearTokens, Addition},
    {"cryptoTokens", CryptoH323Tokens, Addition},
    {"conferences", OpenType, Addition},
    {"h245Address", TransportAddress, Addition},
    {"fastStart", OctetStrings, Addition},
    {"multipleCalls", Boolean, Addition},
    {"maintainConnection", Boolean, Addition},
    {"fastConnectRefused", Null, Addition},
    {"serviceControl", OpenType, Addition},
    {"circuitInfo", OpenType, Addition},
    {"featureSet", OpenType, Addition},
    {"destinationInfo", EndpointType, Addition},
    {"h245SecurityMode", H245Security, Addition},
};
const Type Facility_UUIE = sequence("Facility-UUIE", Facility_UUIE_, Extensible);

// Progress-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   destinationInfo EndpointType, h245Address TransportAddress OPTIONAL,
//   callIdentifier CallIdentifier, h245SecurityMode H245Security OPTIONAL,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL,
//   fastStart SEQUENCE OF OCTET STRING OPTIONAL, ...,
//   multipleCalls BOOLEAN, maintainConnection BOOLEAN, fastConnectRefused NULL OPTIONAL }
const Component Progress_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},   {"destinationInfo", EndpointType},
    {"h245Address", TransportAddress, Optional},  {"callIdentifier", CallIdentifier},
    {"h245SecurityMode", H245Security, Optional}, {"tokens", ClearTokens, Optional},
    {"cryptoTokens", CryptoH323Tokens, Optional}, {"fastStart", OctetStrings, Optional},
    {"multipleCalls", Boolean, Addition},         {"maintainConnection", Boolean, Addition},
    {"fastConnectRefused", Null, Addition},
};
const Type Progress_UUIE = sequence("Progress-UUIE", Progress_UUIE_, Extensible);

// SetupAcknowledge-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier,
//   callIdentifier CallIdentifier, tokens SEQUENCE OF ClearToken OPTIONAL,
//   cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL, ... }
const Component SetupAcknowledge_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"callIdentifier", CallIdentifier},
    {"tokens", ClearTokens, Optional},
    {"cryptoTokens", CryptoH323Tokens, Optional},
};
const Type SetupAcknowledge_UUIE = sequence("SetupAcknowledge-UUIE", SetupAcknowledge_UUIE_, Extensible);

// Status-UUIE and StatusInquiry-UUIE have the same components as SetupAcknowledge-UUIE.
const Type Status_UUIE = sequence("Status-UUIE", SetupAcknowledge_UUIE_, Extensible);
const Type StatusInquiry_UUIE = sequence("StatusInquiry-UUIE", SetupAcknowledge_UUIE_, Extensible);

// Notify-UUIE ::= SEQUENCE { protocolIdentifier ProtocolIdentifier, callIdentifier CallIdentifier,
//   tokens SEQUENCE OF ClearToken OPTIONAL, cryptoTokens SEQUENCE OF CryptoH323Token OPTIONAL, ...,
//   connectedAddress SEQUENCE OF AliasAddress OPTIONAL, presentationIndicator PresentationIndicator OPTIONAL,
//   screeningIndicator ScreeningIndicator OPTIONAL, destinationInfo EndpointType OPTIONAL,
//   displayName SEQUENCE OF DisplayName OPTIONAL }
const Component Notify_UUIE_[] = {
    {"protocolIdentifier", ProtocolIdentifier},
    {"callIdentifier", CallIdentifier},
    {"tokens", ClearTokens, Optional},
    {"cryptoTokens", CryptoH323Tokens, Optional},
    {"connectedAddress", AliasAddresses, Addition},
    {"presentationIndicator", PresentationIndicator, Addition},
    {"screeningIndicator", ScreeningIndicator, Addition},
    {"destinationInfo", EndpointType, Addition},
    {"displayName", OpenType, Addition},
};
const Type Notify_UUIE = sequence("Notify-UUIE", Notify_UUIE_, Extensible);

// H323-UU-PDU ::= SEQUENCE {
//   h323-message-body CHOICE { setup Setup-UUIE, callProceeding CallProceeding-UUIE,
//     connect Connect-UUIE, alerting Alerting-UUIE, information Information-UUIE,
//     releaseComplete ReleaseComplete-UUIE, facility Facility-UUIE, ...,
//     progress Progress-UUIE, empty NULL, status Status-UUIE, statusInquiry StatusInquiry-UUIE,
//     setupAcknowledge SetupAcknowledge-UUIE, notify Notify-UUIE },
//   nonStandardData NonStandardParameter OPTIONAL, ...,
//   h4501SupplementaryService SEQUENCE OF OCTET STRING OPTIONAL, h245Tunneling BOOLEAN,
//   h245Control SEQUENCE OF OCTET STRING OPTIONAL,
//   nonStandardControl SEQUENCE OF NonStandardParameter OPTIONAL, callLinkage CallLinkage OPTIONAL,
//   tunnelledSignallingMessage SEQUENCE {...} OPTIONAL, provisionalRespToH245Tunneling NULL OPTIONAL,
//   stimulusControl StimulusControl OPTIONAL, genericData SEQUENCE OF GenericData OPTIONAL }
const Component H323_UU_PDU_h323_message_body_[] = {
    {"setup", Setup_UUIE},
    {"callProceeding", CallProceeding_UUIE},
    {"connect", Connect_UUIE},
    {"alerting", Alerting_UUIE},
    {"information", Information_UUIE},
    {"releaseComplete", ReleaseComplete_UUIE},
    {"facility", Facility_UUIE},
    {"progress", Progress_UUIE, Addition},
    {"empty", Null, Addition},
    {"status", Status_UUIE, Addition},
    {"statusInquiry", StatusInquiry_UUIE, Addition},
    {"setupAcknowledge", SetupAcknowledge_UUIE, Addition},
    {"notify", Notify_UUIE, Addition},
};
const Type H323_UU_PDU_h323_message_body = choice("h323_message_body", H323_UU_PDU_h323_message_body_, Extensible);
const Type NonStandardParameters = sequenceOf(NonStandardParameter);
const Component H323_UU_PDU_[] = {
    {"h323_message_body", H323_UU_PDU_h323_message_body},
    {"nonStandardData", NonStandardParameter, Optional},
    {"h4501SupplementaryService", OctetStrings, Addition},
    {"h245Tunneling", Boolean, Addition},
    {"h245Control", OctetStrings, Addition},
    {"nonStandardControl", NonStandardParameters, Addition},
    {"callLinkage", OpenType, Addition},
    {"tunnelledSignallingMessage", OpenType, Addition},
    {"provisionalRespToH245Tunneling", Null, Addition},
    {"stimulusControl", OpenType, Addition},
    {"genericData", OpenType, Addition},
};
const Type H323_UU_PDU = sequence("H323-UU-PDU", H323_UU_PDU_, Extensible);

// H323-UserInformation ::= SEQUENCE { h323-uu-pdu H323-UU-PDU,
//   user-data SEQUENCE { protocol-discriminator INTEGER(0..255),
//     user-information OCTET STRING(SIZE(1..131)), ... } OPTIONAL, ... }
const Type H323_UserInformation_user_data_user_information = octetString(size(1, 131));
const Component H323_UserInformation_user_data_[] = {
    {"protocol_discriminator", Int0_255},
    {"user_information", H323_UserInformation_user_data_user_information},
};
const Type H323_UserInformation_user_data = sequence("user_data", H323_UserInformation_user_data_, Extensible);
const Component H323_UserInformation_[] = {
    {"h323_uu_pdu", H323_UU_PDU},
    {"user_data", H323_UserInformation_user_data, Optional},
};
const Type H323_UserInformation = sequence("H323-UserInformation", H323_UserInformation_, Extensible);

const Type* const kTypes[] = {
    &H323_UserInformation,
    &H323_UU_PDU,
    &Setup_UUIE,
    &CallProceeding_UUIE,
    &Connect_UUIE,
    &Alerting_UUIE,
    &Information_UUIE,
    &ReleaseComplete_UUIE,
    &ReleaseCompleteReason,
    &Facility_UUIE,
    &FacilityReason,
    &Progress_UUIE,
    &SetupAcknowledge_UUIE,
    &Status_UUIE,
    &StatusInquiry_UUIE,
    &Notify_UUIE,
    &TransportAddress,
    &AliasAddress,
    &PartyNumber,
    &PublicPartyNumber,
    &PrivatePartyNumber,
    &PublicTypeOfNumber,
    &PrivateTypeOfNumber,
    &MobileUIM,
    &ANSI_41_UIM,
    &GSM_UIM,
    &EndpointType,
    &VendorIdentifier,
    &H221NonStandard,
    &GatekeeperInfo,
    &GatewayInfo,
    &McuInfo,
    &TerminalInfo,
    &SupportedProtocols,
    &H310Caps,
    &H320Caps,
    &H321Caps,
    &H322Caps,
    &H323Caps,
    &H324Caps,
    &VoiceCaps,
    &T120OnlyCaps,
    &NonStandardParameter,
    &NonStandardIdentifier,
    &CallIdentifier,
    &QseriesOptions,
    &Q954Details,
    &CallType,
    &H245Security,
    &SecurityCapabilities,
    &SecurityServiceMode,
    &PresentationIndicator,
    &ScreeningIndicator,
    &CryptoH323Token,
    &ClearToken,
    &CryptoToken,
    &DHset,
    &TypedCertificate,
    &Params,
    &SIGNED,
    &ENCRYPTED,
    &HASHED,
    &H235NonStandardParameter,
};
const size_t kTypeCount = sizeof(kTypes) / sizeof(kTypes[0]);

}  // namespace h323::h225
