// The Java client. See README.md for what it is asked and what it answers.

import com.google.protobuf.CodedOutputStream;
import com.google.protobuf.DiscardUnknownFieldsParser;
import com.google.protobuf.InvalidProtocolBufferException;
import com.google.protobuf.Message;
import com.google.protobuf.MessageLite;
import com.google.protobuf.Parser;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.HexFormat;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import ui.vok.rulecheck.pb.RuleService.CreateViolation;
import ui.vok.rulecheck.pb.RuleService.Link;
import ui.vok.rulecheck.pb.RuleService.Reference;
import ui.vok.rulecheck.pb.RuleService.Request;
import ui.vok.rulecheck.pb.RuleService.Resource;
import ui.vok.rulecheck.pb.RuleService.Response;
import ui.vok.rulecheck.pb.RuleService.RuleSpec;
import ui.vok.rulecheck.pb.RuleService.Session;
import ui.vok.rulecheck.pb.RuleService.StartSession;
import ui.vok.rulecheck.pb.RuleService.Violation;

public final class Client {
  private static final HexFormat HEX = HexFormat.of();

  // Reading and writing

  @SuppressWarnings("unchecked")
  private static Parser<Message> parserOf(String type) throws ReflectiveOperationException {
    Class<?> generated = Class.forName("ui.vok.rulecheck.pb.RuleService$" + type);
    Message instance = (Message) generated.getMethod("getDefaultInstance").invoke(null);
    return (Parser<Message>) instance.getParserForType();
  }

  private static String written(MessageLite message) throws IOException {
    byte[] bytes = new byte[message.getSerializedSize()];
    CodedOutputStream out = CodedOutputStream.newInstance(bytes);
    out.useDeterministicSerialization();
    message.writeTo(out);
    out.checkNoSpaceLeft();
    return HEX.formatHex(bytes);
  }

  private static String copy(Parser<Message> parser, byte[] data) {
    Message message;
    try {
      message = parser.parsePartialFrom(data);
    } catch (InvalidProtocolBufferException error) {
      return "unreadable " + error.getMessage();
    }
    try {
      return "ok " + written(message);
    } catch (IOException | RuntimeException error) {
      return "unwritable " + error.getMessage();
    }
  }

  private static String text(byte[] data) {
    try {
      String value = Link.parser().parsePartialFrom(data).getLinkText();
      return "text " + HEX.formatHex(value.getBytes(StandardCharsets.UTF_8));
    } catch (InvalidProtocolBufferException error) {
      return "unreadable " + error.getMessage();
    }
  }

  private static String answer(String line) throws ReflectiveOperationException {
    String[] words = line.split(" ");
    byte[] data = HEX.parseHex(words.length > 2 ? words[2] : "");
    Parser<Message> parser = parserOf(words[1]);
    return switch (words[0]) {
      case "text" -> text(data);
      case "copy" -> copy(parser, data);
      case "known" -> copy(DiscardUnknownFieldsParser.wrap(parser), data);
      default -> throw new IllegalArgumentException(line);
    };
  }

  private static void answerLines() throws IOException, ReflectiveOperationException {
    BufferedReader in = new BufferedReader(new InputStreamReader(System.in));
    for (String line = in.readLine(); line != null; line = in.readLine()) {
      System.out.println(answer(line).trim().replaceAll("\\s+", " "));
    }
  }

  // A conversation with a server

  private static Request rule() {
    Resource.Builder url =
        Resource.newBuilder()
            .setScheme(Resource.Scheme.HTTPS)
            .setHost("host.example")
            .setPath("/width");
    RuleSpec.Builder spec =
        RuleSpec.newBuilder()
            .setKey("WIDTH")
            .setFullName("Width of a bus")
            .setRawMsg("%1 has %2: %3")
            .setResolutionMsg("Make it narrower.")
            .setSeverity(Violation.Severity.SEV_WARNING)
            .putCategories(2, "timing")
            .putCategories(-1, "unsorted")
            .putDynamicCategories(7, true);
    spec.getExamplesBuilder().addUriBuilder().setLinkText("manual").setUrl(url);
    Request.Builder request = Request.newBuilder().setType(Request.RequestType.UPSERT_RULESPEC);
    request.getUpsertRulespecBuilder().setRuleSpec(spec);
    return request.build();
  }

  private static Request session() {
    StartSession.Builder start =
        StartSession.newBuilder().setName("nightly").setPid(4711).setUuid("s-1");
    start
        .getReportFileBuilder()
        .setScheme(Resource.Scheme.FILE)
        .setPath("/reports/nightly.html");
    return Request.newBuilder()
        .setType(Request.RequestType.START_SESSION)
        .setStartSession(start)
        .build();
  }

  private static Request violation() {
    CreateViolation.Builder body =
        CreateViolation.newBuilder()
            .setRuleKey("WIDTH")
            .setSessionUuid("s-1")
            .setSeverity(Violation.Severity.SEV_CRITICAL_WARNING)
            .putDynamicCategoryValues("7", "team α");
    Reference.Builder port = body.getArgsBuilder().addArgBuilder().getRefBuilder();
    port.setType(Reference.RefType.PORT).setName("clk").setId(-1);
    port.getUrlBuilder()
        .setScheme(Resource.Scheme.FILE)
        .setPath("/rtl/fifo.v")
        .setFragment("L12");
    body.getArgsBuilder().addArgBuilder().getScalarBuilder().setIntVal(-9007199254740993L);
    body.getArgsBuilder().addArgBuilder().setStringVal("naïve – ✓ 🙂");
    body.getActualValueBuilder().setDoubleVal(187.5).setUnits("MHz");
    body.getThresholdValueBuilder().setIntVal(9223372036854775807L);
    return Request.newBuilder()
        .setType(Request.RequestType.CREATE_VIOLATION)
        .setCreateViolation(body)
        .build();
  }

  private record Fact(String name, Object got, Object expected) {}

  private static List<Fact> statusFacts(Response response) {
    return List.of(
        new Fact("type", response.getType(), Response.ResponseType.STATUS_RESPONSE),
        new Fact("status.code", response.getStatus().getCode(), 0),
        new Fact("status.msg", response.getStatus().getMsg(), "rule stored"),
        new Fact("has_error", response.hasError(), false));
  }

  private static List<Fact> sessionFacts(Response response) {
    Session opened = response.getSession();
    Resource report = opened.getReportFile();
    return List.of(
        new Fact("type", response.getType(), Response.ResponseType.SESSION),
        new Fact("session.name", opened.getName(), "nightly"),
        new Fact("session.uuid", opened.getUuid(), "s-1"),
        new Fact("session.has_description", opened.hasDescription(), false),
        new Fact("session.timestamp", opened.getTimestamp(), 1700000000123L),
        new Fact("session.report_file.scheme", report.getScheme(), Resource.Scheme.FILE),
        new Fact("session.report_file.path", report.getPath(), "/reports/nightly.html"),
        new Fact("session.has_proto_file", opened.hasProtoFile(), false));
  }

  private static List<Fact> violationFacts(Response response) {
    Violation found = response.getViolation();
    Link link = found.getExamples().getUri(0);
    Reference port = found.getDetails().getArgs().getArg(0).getRef();
    long number = found.getDetails().getArgs().getArg(1).getScalar().getIntVal();
    String words = found.getDetails().getArgs().getArg(2).getStringVal();
    return List.of(
        new Fact("type", response.getType(), Response.ResponseType.VIOLATION),
        new Fact("id", found.getId(), 1),
        new Fact("severity", found.getSeverity(), Violation.Severity.SEV_CRITICAL_WARNING),
        new Fact("rule_key", found.getRuleKey(), "WIDTH"),
        new Fact("examples.uri", found.getExamples().getUriCount(), 1),
        new Fact("examples.uri.link_text", link.getLinkText(), "manual"),
        new Fact("examples.uri.url.scheme", link.getUrl().getScheme(), Resource.Scheme.HTTPS),
        new Fact("examples.uri.url.host", link.getUrl().getHost(), "host.example"),
        new Fact("examples.uri.url.has_port", link.getUrl().hasPort(), false),
        new Fact("examples.uri.url.path", link.getUrl().getPath(), "/width"),
        new Fact("has_build_target", found.hasBuildTarget(), false),
        new Fact("has_expects", found.hasExpects(), false),
        new Fact("actual_value.has_int_val", found.getActualValue().hasIntVal(), false),
        new Fact("actual_value.double_val", found.getActualValue().getDoubleVal(), 187.5),
        new Fact("actual_value.units", found.getActualValue().getUnits(), "MHz"),
        new Fact(
            "threshold_value.int_val",
            found.getThresholdValue().getIntVal(),
            9223372036854775807L),
        new Fact("details.text", found.getDetails().getText(), "%1 has %2: %3"),
        new Fact("arg", found.getDetails().getArgs().getArgCount(), 3),
        new Fact("arg.ref.type", port.getType(), Reference.RefType.PORT),
        new Fact("arg.ref.name", port.getName(), "clk"),
        new Fact("arg.ref.id", port.getId(), -1),
        new Fact("arg.ref.url.scheme", port.getUrl().getScheme(), Resource.Scheme.FILE),
        new Fact("arg.ref.url.path", port.getUrl().getPath(), "/rtl/fifo.v"),
        new Fact("arg.ref.url.fragment", port.getUrl().getFragment(), "L12"),
        new Fact("arg.scalar.int_val", number, -9007199254740993L),
        new Fact("arg.string_val", words, "naïve – ✓ 🙂"),
        new Fact("resolution.text", found.getResolution().getText(), "Make it narrower."),
        new Fact("resolution.has_args", found.getResolution().hasArgs(), false),
        new Fact(
            "categories",
            found.getCategoriesMap(),
            Map.of(-1, "unsorted", 2, "timing", 7, "team α")));
  }

  private static Response ask(Request request) throws IOException {
    request.writeDelimitedTo(System.out);
    System.out.flush();
    return Response.parseDelimitedFrom(System.in);
  }

  private static List<Fact> converse() throws IOException {
    List<Fact> facts = new ArrayList<>();
    facts.addAll(statusFacts(ask(rule())));
    facts.addAll(sessionFacts(ask(session())));
    facts.addAll(violationFacts(ask(violation())));
    facts.removeIf(fact -> Objects.equals(fact.got(), fact.expected()));
    return facts;
  }

  public static void main(String[] arguments) throws IOException, ReflectiveOperationException {
    if (!List.of(arguments).equals(List.of("converse"))) {
      answerLines();
      return;
    }
    List<Fact> failed = converse();
    for (Fact fact : failed) {
      System.err.println(fact.name() + ": " + fact.got() + ", not " + fact.expected());
    }
    System.exit(failed.isEmpty() ? 0 : 1);
  }
}
