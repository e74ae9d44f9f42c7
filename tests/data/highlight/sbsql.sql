-- SB/SQL: orders of a shop; don't read "quotes" in here
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

USE shop
GO
DECLARE @total MONEY, @name VARCHAR(40)
SELECT @total = SUM(total), @name = "O'Brien" FROM orders HOLDLOCK
IF @@error != 0 OR @@rowcount = 0
BEGIN
    RAISERROR 20001 "it's gone -- all of it"
    RETURN @@sqlstatus
END
SELECT [customer's name], [a "quoted" one], [with -- signs] FROM [orders /* all */] AT ISOLATION 0
EXEC sp_help 'orders'
SELECT * INTO #copy FROM orders WHERE 1 = 0 COMPUTE SUM(total) BY id
WHILE @@fetch_status = 0 BEGIN BREAK END
PRINT 'C:\' + "D:\"
SET ROWCOUNT 10 WAITFOR DELAY '00:00:05'
BEGIN TRAN SAVE TRAN before_it ROLLBACK TRAN
SELECT @@authmech, @@boottime
/* never closed: 'text
SELECT 1
