-- PL/SQL: orders of a shop; don't read "quotes" in here
/* A comment over
   several lines: it's 'text', "text" and -- text

   */
CREATE TABLE orders (
    id INTEGER NOT NULL PRIMARY KEY, -- the number
    customer VARCHAR(40) DEFAULT 'O''Brien' NOT NULL,
    total DECIMAL(10, 2) CHECK (total >= 0.5), /* never below */
    placed DATE, "odd -- name" CHAR(1), "it's" INTEGER,
    note VARCHAR(200) DEFAULT ''
);

Insert Into orders (id, customer, total) VALUES (1, 'it''s -- no comment', 1.5e3);
INSERT INTO orders VALUES (2, 'say "hi" /* as text */', -.25, NULL, 'x', 0, '''');
insert into orders values (3, 'a text that begins here
and goes on -- as text
with ''quotes'' and "more"

until it ends here', 5);

SELECT o.id, COUNT(*) AS lines, SUM(l.price * 1.19) total /* with tax */
  FROM orders o LEFT OUTER JOIN order_lines l ON o.id = l.order_id -- all of them
 WHERE o.total BETWEEN 10 AND 100 - 5
   AND o.customer LIKE 'A%' OR o.customer IN ('B', 'C''D', '')
   AND NOT EXISTS (SELECT 1 FROM "closed -- orders" c WHERE c.id = o.id)
 GROUP BY o.id HAVING COUNT(*) > 1
 ORDER BY total DESC;

UPDATE orders SET note = '/* not opened', total = total-1 WHERE id = 4; -- 'nor here
UPDATE orders SET note = 'closed */' WHERE "id" = 5;
DELETE FROM orders WHERE placed < CURRENT_DATE - 30 OR placed IS NULL;
COMMIT;

SELECT 'one' 'two', 'three'/**/'four', 'five'--six
  FROM orders/* a */WHERE/***/id > 0x1F;
SELECT "never closed
  FROM orders; -- the quote ended with its line
SELECT "
  FROM orders;

GRANT SELECT, INSERT ON orders TO PUBLIC;
CREATE VIEW small AS SELECT * FROM orders WHERE total < 10;
DROP VIEW small;
ROLLBACK;

CREATE OR REPLACE PACKAGE BODY shop AS
    c_limit CONSTANT NUMBER := 1_000;
    TYPE t_names IS TABLE OF VARCHAR2(40) INDEX BY BINARY_INTEGER;
    PROCEDURE raise_total(p_id IN orders.id%TYPE, p_out OUT NOCOPY NUMBER) IS
        CURSOR c IS SELECT * FROM orders FOR UPDATE OF total NOWAIT;
        r c%ROWTYPE;
        e_bad EXCEPTION; PRAGMA EXCEPTION_INIT(e_bad, -20001);
    BEGIN
        FOR r IN c LOOP -- all of them
            EXIT WHEN c%NOTFOUND;
            IF r.note LIKE '%''%' ESCAPE '\' THEN NULL; ELSIF r.total IS NOT NULL THEN
                UPDATE orders SET total = total * 1.1 WHERE CURRENT OF c;
            END IF;
        END LOOP;
        p_out := SQL%ROWCOUNT; /* done */
    EXCEPTION WHEN OTHERS THEN
        dbms_output.put_line('failed: ' || SQLERRM || CHR(10)); RAISE;
    END raise_total;
END shop;
/
SELECT NVL(customer, '-'), DECODE(id, 1, 'one', 2, 'two''s'), SYSDATE, ROWNUM FROM dual
 START WITH id = 1 CONNECT BY PRIOR id = parent;
<<label>> GOTO label;
ALTER accsess access;
/* never closed: 'text
SELECT 1 FROM dual;
