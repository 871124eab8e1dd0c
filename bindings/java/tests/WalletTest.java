import java.time.Instant;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.CompletionException;
import kavio.*;

/** What the wallet makes of the lines, against a sandbox. Arguments: STORE AUTHORITY.pem HOST:PORT */
public class WalletTest {
    private static final PaymentMethod BALANCE = new PaymentMethod("0", "", PaymentType.KAVIO);

    private static void expect(Object expected, Object given) {
        if (!Objects.equals(expected, given)) throw new AssertionError(given + " instead of " + expected);
    }

    private static Throwable failureOf(CompletableFuture<?> future) {
        try {
            future.join();
        } catch (CompletionException failure) {
            return failure.getCause();
        }
        throw new AssertionError("it did not fail");
    }

    private static void objectsHaveTheirTypes(Wallet wallet) {
        List<PaymentMethod> methods = wallet.getPaymentMethods().join();
        expect(List.of(DepositCard.class, CreditCard.class, CreditCard.class, PrepaidCard.class, PrepaidCard.class),
                methods.stream().map(Object::getClass).toList());
        expect(true, ((PrepaidCard) methods.get(3)).created.isAfter(Instant.EPOCH));
        MachineFilter code = new MachineFilter();
        code.value = "42100107";
        Machine machine = wallet.getMachines(code).join().get(0);
        expect(42100107L, machine.kavioId);
        expect(MachineType.HOT_DRINKS, machine.type);
        expect(true, machine.campaigns.get(0).lookAndFeel.images.get(0).iOS);
        expect("Espresso", wallet.getMachineProducts(machine.id).join().get(0).name);
        TransactionFilter before = new TransactionFilter();
        before.transactionsBefore = Instant.parse("2000-01-01T00:00:00Z");
        expect(List.of(), wallet.getTransactions(before).join());
        expect(List.of(), wallet.unsettledPayments().join());
    }

    private static void failuresSayWhy(Wallet wallet) {
        KavioException failure = (KavioException) failureOf(wallet.getOrder("one"));
        expect(List.of(ResultType.BAD_INPUT, Cause.INVALID_INPUT, Effect.NONE, "{one} is invalid order ID"),
                List.of(failure.type, failure.reason, failure.effect, failure.getMessage()));
        expect("\"orderId\" is missing", failureOf(wallet.getOrder(null)).getMessage());
        try {
            new Session("{\"storeDir\":\"/nowhere\"}");
            throw new AssertionError("a session with another store");
        } catch (IllegalArgumentException refusal) {
            expect(true, refusal.getMessage().contains("storeDir"));
        }
    }

    private static void aPurchaseReportsOnTheWayAndHoldsBackWhatFollows(Wallet wallet) {
        List<OrderStatus> statuses = new ArrayList<>();
        CompletableFuture<Order> purchase =
                wallet.placeOrder(42100107, BALANCE, 150, null, order -> statuses.add(order.status));
        wallet.isLoggedIn().join();
        expect(true, purchase.isDone());
        expect(List.of(OrderStatus.CREATED, OrderStatus.COMPLETED), statuses);
        expect(OrderStatus.COMPLETED, purchase.join().status);
        expect(KavioException.class, failureOf(wallet.placeOrder(42100115, BALANCE, 150, null, order -> {})).getClass());
    }

    private static void closingEndsWhatIsUnderWay(Wallet.Options options) {
        CompletableFuture<Order> first = new CompletableFuture<>();
        CompletableFuture<Order> purchase;
        try (Wallet other = new Wallet(options)) {
            purchase = other.placeOrder(42103042, BALANCE, 150, null, first::complete); // never progresses
            expect(OrderStatus.CREATED, first.join().status);
        }
        expect(Session.ClosedException.class, failureOf(purchase).getClass());
    }

    public static void main(String[] arguments) {
        Wallet.Options options = new Wallet.Options();
        options.storeDir = arguments[0];
        options.caFile = arguments[1];
        options.connectTo = arguments[2];
        try (Wallet wallet = new Wallet(options)) {
            wallet.login("49", "151234568").join();
            wallet.verify("123456", "DE", "49", "151234568").join();
            objectsHaveTheirTypes(wallet);
            failuresSayWhy(wallet);
            aPurchaseReportsOnTheWayAndHoldsBackWhatFollows(wallet);
        }
        closingEndsWhatIsUnderWay(options);
        System.out.println("OK");
    }
}
