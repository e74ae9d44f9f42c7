-- DB2: orders of a shop; don't read "quotes" in here
/* A comment over
   several lines: it's 'text', "text" and -- text

   */
CREATE TABLE orders (
    id INTEGER NOT NULL PRIMARY KEY, -- the number
    customer VARCHAR(40) DEFAULT 'O''Brien' NOT NULL,
    total DECIMAL(10, 2) CHECK (total >= 0.5), CREATE ALIAS o FOR orders; LOCK TABLE orders IN EXCLUSIVE MODE;
SELECT RANK() OVER (PARTITION BY customer ORDER BY total) FROM orders WITH UR;
CALL raise_prices(1.5, ?); SIGNAL SQLSTATE '70001' SET MESSAGE_TEXT = 'it''s -- bad';
LABEL ON TABLE orders IS 'All "orders"';
/* never below */
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

CREATE TABLESPACE space1 MANAGED BY DATABASE USING (FILE 'd:\db2\' 5000) BUFFERPOOL bp1;
SELECT SUBSTR(customer, 1, 3) CONCAT '\' CONCAT "odd\" FROM orders
 FETCH FIRST 10 ROWS ONLY OPTIMIZE FOR 10 ROWS;
DECLARE GLOBAL TEMPORARY TABLE session.t (d DATE, v VARGRAPHIC(10)) ON COMMIT PRESERVE ROWS;
VALUES (CURRENT TIMESTAMP - 5 MINUTES, YEAR(CURRENT DATE));
MERGE INTO orders USING news ON (orders.id = news.id)
 WHEN MATCHED THEN UPDATE SET total = news.total
 ELSE IGNORE;
SET CURRENT_PATH = 'it''s';
/* never closed: 'text
SELECT 1 FROM sysibm.sysdummy1;
